proc p {a b} {
    set x [list $a \
        $b]
    switch $a {
        one { return 1 }
        default {
            puts "}"
        }
    }
    if {$a} {
        # {
        puts $x
    } else {
        puts ${b}
    }
}
