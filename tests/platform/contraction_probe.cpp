// Proves that the build's flags keep a*b+c two roundings. Built with the project's flags
// and, on x86-64, with FMA instructions allowed (-mfma), so that only -ffp-contract=off
// stands between the source and a fused multiply-add; ARM64 has FMA in its base set.
#include <cstdio>

namespace {

// (1 + 2^-30)(1 - 2^-30) = 1 - 2^-60 rounds to 1, so the separately rounded sum with -1 is
// 0; a fused one keeps -2^-60.
[[gnu::noinline]] double multiplyAdd(double a, double b, double c) { return a * b + c; }
[[gnu::noinline]] float multiplyAddFloat(float a, float b, float c) { return a * b + c; }

}  // namespace

int main() {
#if defined(__x86_64__) || defined(_M_X64)
    if (!__builtin_cpu_supports("fma")) {
        std::puts("this processor has no FMA: nothing to prove");
        return 77;
    }
#endif
    volatile double a = 1.0 + 0x1p-30, b = 1.0 - 0x1p-30, c = -1.0;
    volatile float af = 1.0f + 0x1p-13f, bf = 1.0f - 0x1p-13f, cf = -1.0f;
    const double d = multiplyAdd(a, b, c);
    const float f = multiplyAddFloat(af, bf, cf);
    if (d != 0.0 || f != 0.0f) {
        std::printf("a*b+c was fused: %a (double), %a (float)\n", d, static_cast<double>(f));
        return 1;
    }
    std::puts("a*b+c rounded twice, in double and in float");
    return 0;
}
