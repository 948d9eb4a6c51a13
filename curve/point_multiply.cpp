#include <cstddef>
#include <cstring>
#include <memory>

#include "core/little_endian.h"
#include "core/memory.h"
#include "curve/field.h"
#include "curve/point.h"

namespace core {

namespace {

constexpr unsigned digitsInWord = 32;
constexpr unsigned digitPlus = 1;
constexpr unsigned digitMinus = 3;

/// Adds 1; the carry may run into the word above the W words of `t`, which is zero before.
void increment(FieldElement& t) {
    for (std::size_t i = 0; ++t.words[i] == 0; ++i) {
    }
}

}  // namespace

std::uint64_t nafEncode(const FieldElement& k, std::uint8_t* buffer) {
    const FieldTemporary t(fieldNew(k.degree));
    fieldCopy(k, *t);
    std::uint64_t word = 0;
    unsigned count = 0;
    std::uint64_t written = 0;
    const auto storeWord = [&] {
        std::memcpy(buffer + written, &word, sizeof word);
        written += sizeof word;
        word = 0;
        count = 0;
    };

    while (!fieldIsZero(*t)) {
        std::uint64_t digit = 0;
        if ((t->words[0] & 1) != 0) {
            digit = t->words[0] & 3;
            if (digit == digitPlus) {
                t->words[0] -= 1;
            } else {
                increment(*t);
            }
        }
        word |= digit << 2 * count;
        ++count;
        if (count == digitsInWord) {
            storeWord();
        }
        fieldShiftRightOne(*t);
    }
    if (count != 0) {
        storeWord();
    }
    return written;
}

void pointMultiply(const FieldElement& k, const CurvePoint& P, const CurveCoefficients& curve,
                   CurvePoint& out, const FieldElement& f) {
    out.flags |= pointInfinity;
    PointTemporary doubled(P.x->degree);
    PointTemporary negated(P.x->degree);
    pointCopy(P, *negated);
    pointNegate(*negated);
    const std::unique_ptr<void, decltype(&coreFree)> block(
        coreAlloc(nafBufferSize(k.degree), coreAllocZero), &coreFree);
    auto* const naf = static_cast<std::uint8_t*>(block.get());

    for (std::uint64_t word = nafEncode(k, naf) / sizeof(std::uint32_t); word-- > 0;) {
        const std::uint32_t digits = loadLittle32(naf + sizeof(std::uint32_t) * word);
        for (int position = 30; position >= 0; position -= 2) {
            pointDouble(out, curve, *doubled, f);
            const std::uint32_t digit = digits >> position & 3;
            if (digit == digitPlus) {
                pointAdd(*doubled, P, curve, out, f);
            } else if (digit == digitMinus) {
                pointAdd(*doubled, *negated, curve, out, f);
            } else {
                pointCopy(*doubled, out);
            }
        }
    }
}

}  // namespace core
