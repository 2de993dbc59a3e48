.globl Main
