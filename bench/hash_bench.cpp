// Digests of a mapped file of 64 MiB, ours and other libraries', told in bytes a second, and two
// clocks, told in cycles a second. Each clock is a chain of operations of which each waits for the
// one before: multiplications take three cycles and additions one. Operands are registers, for some
// cores do several additions of constants at once. If the clocks differ, neither is one.

#include <benchmark/benchmark.h>
#include <botan/hash.h>
#include <cryptopp/ripemd.h>
#include <fcntl.h>
#include <gcrypt.h>
#include <nettle/md5.h>
#include <nettle/ripemd160.h>
#include <nettle/sha2.h>
#include <openssl/evp.h>
#include <openssl/provider.h>
#include <rhash.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/hash.h"

namespace {

constexpr std::size_t fileSize = std::size_t{64} << 20;
constexpr std::size_t longestDigest = 32;
using Digest = std::array<unsigned char, longestDigest>;

/// The pages of a file that is gone by its name.
const std::uint8_t* mappedFile() {
    static const std::uint8_t* const address = [] {
        std::string name = "/tmp/hash-bench.XXXXXX";
        const int descriptor = mkstemp(name.data());
        unlink(name.c_str());
        const std::vector<std::uint8_t> content(fileSize, 0x5A);
        if (write(descriptor, content.data(), content.size()) !=
            static_cast<ssize_t>(content.size())) {
            throw std::runtime_error("no room for a file of 64 MiB in /tmp");
        }
        void* const pages = mmap(nullptr, fileSize, PROT_READ, MAP_PRIVATE, descriptor, 0);
        close(descriptor);
        return static_cast<const std::uint8_t*>(pages);
    }();
    return address;
}

using DigestFunction = void (*)(const std::uint8_t* data, std::size_t size, unsigned char* out);

void runDigest(benchmark::State& state, DigestFunction digest) {
    const std::uint8_t* const data = mappedFile();
    Digest out;
    for (auto _ : state) {
        digest(data, fileSize, out.data());
        benchmark::DoNotOptimize(out);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * fileSize));
}

void openssl(const char* name, const std::uint8_t* data, std::size_t size, unsigned char* out) {
    const std::unique_ptr<EVP_MD, decltype(&EVP_MD_free)> digest(
        EVP_MD_fetch(nullptr, name, nullptr), &EVP_MD_free);
    EVP_Digest(data, size, out, nullptr, digest.get(), nullptr);
}

void gcrypt(int algorithm, const std::uint8_t* data, std::size_t size, unsigned char* out) {
    gcry_md_hash_buffer(algorithm, out, data, size);
}

void botan(const char* name, const std::uint8_t* data, std::size_t size, unsigned char* out) {
    const auto hash = Botan::HashFunction::create_or_throw(name);
    hash->update(data, size);
    hash->final(out);
}

const std::vector<std::pair<const char*, DigestFunction>> digests = {
    {"ripemd160/ours", core::ripemd160Digest},
    {"ripemd160/OpenSSL",
     [](auto* data, auto size, auto* out) { openssl("RIPEMD160", data, size, out); }},
    {"ripemd160/LibRHash",
     [](auto* data, auto size, auto* out) { rhash_msg(RHASH_RIPEMD160, data, size, out); }},
    {"ripemd160/libgcrypt",
     [](auto* data, auto size, auto* out) { gcrypt(GCRY_MD_RMD160, data, size, out); }},
    {"ripemd160/Botan",
     [](auto* data, auto size, auto* out) { botan("RIPEMD-160", data, size, out); }},
    {"ripemd160/nettle",
     [](auto* data, auto size, auto* out) {
         ripemd160_ctx context;
         ripemd160_init(&context);
         ripemd160_update(&context, size, data);
         ripemd160_digest(&context, RIPEMD160_DIGEST_SIZE, out);
     }},
    {"ripemd160/Crypto++",
     [](auto* data, auto size, auto* out) {
         CryptoPP::RIPEMD160().CalculateDigest(out, data, size);
     }},
    {"md5/ours", core::md5Digest},
    {"md5/OpenSSL", [](auto* data, auto size, auto* out) { openssl("MD5", data, size, out); }},
    {"md5/LibRHash",
     [](auto* data, auto size, auto* out) { rhash_msg(RHASH_MD5, data, size, out); }},
    {"md5/libgcrypt",
     [](auto* data, auto size, auto* out) { gcrypt(GCRY_MD_MD5, data, size, out); }},
    {"md5/nettle",
     [](auto* data, auto size, auto* out) {
         md5_ctx context;
         md5_init(&context);
         md5_update(&context, size, data);
         md5_digest(&context, MD5_DIGEST_SIZE, out);
     }},
    {"sha256/ours", core::sha256Digest},
    {"sha256/OpenSSL",
     [](auto* data, auto size, auto* out) { openssl("SHA256", data, size, out); }},
    {"sha256/LibRHash",
     [](auto* data, auto size, auto* out) { rhash_msg(RHASH_SHA256, data, size, out); }},
    {"sha256/nettle",
     [](auto* data, auto size, auto* out) {
         sha256_ctx context;
         sha256_init(&context);
         sha256_update(&context, size, data);
         sha256_digest(&context, SHA256_DIGEST_SIZE, out);
     }},
};

constexpr int chainRounds = 100;
constexpr int chainLength = 1000;  // as each .rept below has it

void multiplicationClock(benchmark::State& state) {
    std::uint32_t product = 3;
    for (auto _ : state) {
        for (int i = 0; i < chainRounds; ++i) {
            asm volatile(".rept 1000\n\timull %0, %0\n\t.endr" : "+r"(product)::"cc");
        }
    }
    constexpr int cyclesEach = 3;
    state.SetItemsProcessed(state.iterations() * chainRounds * chainLength * cyclesEach);
}

void additionClock(benchmark::State& state) {
    std::uint64_t sum = 0;
    const std::uint64_t summand = 3;
    for (auto _ : state) {
        for (int i = 0; i < chainRounds; ++i) {
            asm volatile(".rept 1000\n\taddq %1, %0\n\t.endr" : "+r"(sum) : "r"(summand) : "cc");
        }
    }
    state.SetItemsProcessed(state.iterations() * chainRounds * chainLength);
}

}  // namespace

int main(int argc, char** argv) {
    OSSL_PROVIDER_load(nullptr, "default");
    OSSL_PROVIDER_load(nullptr, "legacy");
    gcry_check_version(nullptr);
    rhash_library_init();
    for (const auto& [name, digest] : digests) {
        benchmark::RegisterBenchmark(name, runDigest, digest);
    }
    benchmark::RegisterBenchmark("clock/multiplications", multiplicationClock);
    benchmark::RegisterBenchmark("clock/additions", additionClock);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
}
