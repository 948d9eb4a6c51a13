// Division and multiplication in GF(2^163), ours and libcrypto's.

#include <benchmark/benchmark.h>

#include "bench/operands.h"
#include "curve/field.h"
#include "curve/sect163r2.h"

namespace {

const core::FieldElement& polynomial() {
    return core::sect163r2.domain.reductionPolynomial;
}

/// z^163 + z^7 + z^6 + z^3 + 1 as libcrypto takes it.
constexpr std::array<int, 6> exponents = {163, 7, 6, 3, 0, -1};

void divideOurs(benchmark::State& state) {
    const OperandPairs pairs;
    core::FieldElement out{.degree = fieldBits, .capacity = fieldBytes};
    std::size_t i = 0;
    for (auto _ : state) {
        core::fieldDivide(pairs.elements[i], pairs.elements[i + 1], out, polynomial());
        benchmark::DoNotOptimize(out);
        i = (i + 2) % pairs.elements.size();
    }
}
BENCHMARK(divideOurs)->Name("divide/ours");

void divideLibcrypto(benchmark::State& state) {
    const OperandPairs pairs;
    const NumberContext context(BN_CTX_new());
    const Number out(BN_new());
    const Number f(BN_new());
    BN_GF2m_arr2poly(exponents.data(), f.get());
    std::size_t i = 0;
    for (auto _ : state) {
        BN_GF2m_mod_div(out.get(), pairs.numbers[i].get(), pairs.numbers[i + 1].get(), f.get(),
                        context.get());
        i = (i + 2) % pairs.numbers.size();
    }
}
BENCHMARK(divideLibcrypto)->Name("divide/libcrypto");

void multiplyOurs(benchmark::State& state) {
    const OperandPairs pairs;
    core::FieldElement out{.degree = fieldBits, .capacity = fieldBytes};
    std::size_t i = 0;
    for (auto _ : state) {
        core::fieldMultiply(pairs.elements[i], pairs.elements[i + 1], out);
        core::fieldReduce(out, polynomial());
        benchmark::DoNotOptimize(out);
        i = (i + 2) % pairs.elements.size();
    }
}
BENCHMARK(multiplyOurs)->Name("multiply/ours");

void multiplyLibcrypto(benchmark::State& state) {
    const OperandPairs pairs;
    const NumberContext context(BN_CTX_new());
    const Number out(BN_new());
    std::size_t i = 0;
    for (auto _ : state) {
        BN_GF2m_mod_mul_arr(out.get(), pairs.numbers[i].get(), pairs.numbers[i + 1].get(),
                            exponents.data(), context.get());
        i = (i + 2) % pairs.numbers.size();
    }
}
BENCHMARK(multiplyLibcrypto)->Name("multiply/libcrypto");

}  // namespace
