template <typename T>
class X : public Y {
    Q_DISABLE_COPY(X)
public:
    X()
        : a(1),
          b(2)
    {
        if (a) return;
        switch (b) {
        case 1:
            g();
            break;
        default: h();
        }
        for (int i = 0; i < 3; ++i)
            if (i)
                k([&] {
                    l();
                });
    }
#define M(x) \
  do { \
  } while (0)
private slots:
    void done();
private:
    enum { A, B,
        C };
};
