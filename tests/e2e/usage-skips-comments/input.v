foo Foo // foo
food
/* foo
foo */ foo
bar
