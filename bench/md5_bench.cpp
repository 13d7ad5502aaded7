// Our MD5 beside OpenSSL's, from a short text to a block that no cache holds.
#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <vector>

#include "files/md5.h"

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

BENCHMARK(ours)->Arg(64)->Arg(4096)->Arg(64 << 10)->Arg(64 << 20);
BENCHMARK(openssl)->Arg(64)->Arg(4096)->Arg(64 << 10)->Arg(64 << 20);
