a = 1; // x=y
bbb = 2; // yy=1

cccccc = "=";
d = "xx=";
