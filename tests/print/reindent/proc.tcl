proc p {a} {
  set x 1
  if {$a} {
    puts a
  } else {
    puts b
  }
  foo a \
    b
  set y 2
}
