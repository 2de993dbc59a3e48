#define X 1
int f(int a,
      int b) {
    if (a) {
        g();
    } else if (b) {
        h("}");
    } else
        i();
#if X
    int t[] = {1, 2};
#endif
    switch (a) {
    case 1:
        break;
    default:
        return;
    }
    while (a &&
           b) {
        x = {1,
            2};
    }
    again:
    g();
    long_call(a,
              b);
}
struct s {
    int x;
};
