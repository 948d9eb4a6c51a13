// What a signature costs besides the multiple of the base point: both modular inverses, of which
// the Montgomery set-up needs one.

#include <benchmark/benchmark.h>

#include "core/integer.h"
#include "core/montgomery.h"
#include "curve/field.h"
#include "curve/random_scalar.h"
#include "curve/sect163r2.h"

namespace {

constexpr std::uint64_t integerBits = 2608;

void inversesAndSetup(benchmark::State& state) {
    const core::FieldElement& order = core::sect163r2.domain.order;
    const core::IntegerTemporary modulus(core::integerAlloc(integerBits));
    const core::IntegerTemporary nonce(core::integerAlloc(integerBits));
    const core::IntegerTemporary inverse(core::integerAlloc(integerBits));
    const core::FieldTemporary k(core::fieldNew(order.degree));
    core::fieldToInteger(order, *modulus);
    core::drawScalar(*k, order);
    core::fieldToInteger(*k, *nonce);
    for (auto _ : state) {
        core::montgomerySetup(*modulus);
        core::integerModularInverse(*nonce, *modulus, *inverse);
        core::montgomeryTeardown();
    }
}
BENCHMARK(inversesAndSetup)->Name("inverses/ours");

}  // namespace
