// Our MD5 beside OpenSSL's, from a short text to a block that no cache holds; and many messages at once, by every means of
// this processor, beside one by one.
#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "files/md5.h"
#include "files/md5_lanes.h"

static void ours(benchmark::State& state) {
    const std::vector<unsigned char> bytes(static_cast<std::size_t>(state.range(0)), 0x5a);
    while (state.KeepRunning()) {
        MD5_CTX context;
        MD5Init(&context);
        MD5UpdateWide(&context, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
        MD5Final(&context);
        benchmark::DoNotOptimize(context.digest);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

static void openssl(benchmark::State& state) {
    const std::vector<unsigned char> bytes(static_cast<std::size_t>(state.range(0)), 0x5a);
    const EVP_MD* md5 = EVP_md5();
    EVP_MD_CTX* context = EVP_MD_CTX_new();
    while (state.KeepRunning()) {
        unsigned char digest[EVP_MAX_MD_SIZE];
        EVP_DigestInit_ex(context, md5, nullptr);
        EVP_DigestUpdate(context, bytes.data(), bytes.size());
        EVP_DigestFinal_ex(context, digest, nullptr);
        benchmark::DoNotOptimize(digest);
    }
    EVP_MD_CTX_free(context);
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

// Sixty-four messages of one length from memory.
struct equal_messages : md5_messages {
    std::vector<unsigned char> bytes;
    std::vector<std::size_t> at = std::vector<std::size_t>(64);
    std::size_t begun = 0;
    bool next(std::size_t& i) override { return (i = begun++) < at.size(); }
    std::ptrdiff_t read(std::size_t i, unsigned char* to, std::size_t room) override {
        const std::size_t take = std::min(room, bytes.size() - at[i]);
        std::memcpy(to, bytes.data() + at[i], take);
        at[i] += take;
        return static_cast<std::ptrdiff_t>(take);
    }
    void signed_as(std::size_t, const std::string& signature) override { benchmark::DoNotOptimize(signature); }
};

static void lanes(benchmark::State& state, md5_means means) {
    if (means > best_md5_means()) return state.SkipWithError("not on this processor");
    equal_messages all;
    all.bytes.assign(static_cast<std::size_t>(state.range(0)), 0x5a);
    while (state.KeepRunning()) {
        std::fill(all.at.begin(), all.at.end(), 0);
        all.begun = 0;
        md5_sign_all(all, means);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * 64);
}

BENCHMARK_CAPTURE(lanes, alone, md5_means::alone)->Arg(4096)->Arg(1 << 20);
BENCHMARK_CAPTURE(lanes, avx2, md5_means::avx2)->Arg(4096)->Arg(1 << 20);
BENCHMARK_CAPTURE(lanes, avx512, md5_means::avx512)->Arg(4096)->Arg(1 << 20);
BENCHMARK(ours)->Arg(64)->Arg(4096)->Arg(64 << 10)->Arg(64 << 20);
BENCHMARK(openssl)->Arg(64)->Arg(4096)->Arg(64 << 10)->Arg(64 << 20);
