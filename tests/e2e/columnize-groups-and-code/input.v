a = 1; // x=y
bbb = 2;

cccccc = "=";
d = 4;
