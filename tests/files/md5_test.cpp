#include "files/md5.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "files/error_str.h"
#include "files/md5_lanes.h"
#include "support/scratch.h"

static std::string digest(const std::string& text, std::size_t piece) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    MD5_CTX context;
    MD5Init(&context);
    for (std::size_t at = 0; at < text.size(); at += piece)
        MD5UpdateWide(&context, bytes + at, static_cast<std::uint32_t>(std::min(piece, text.size() - at)));
    MD5Final(&context);
    return md5_hex(context);
}

TEST(md5, published_vectors_and_no_seam_between_pieces) {
    EXPECT_EQ(digest("", 1), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(digest("message digest", 20), "f96b697d7cb7938d525a2f31aaf161d0");
    EXPECT_EQ(digest("12345678901234567890123456789012345678901234567890123456789012345678901234567890", 80),
              "57edf4a22be3c955ac49da2e2107b67a");
    std::string all;  // digests of all lengths across both ways of padding; what they come to was worked out elsewhere
    for (std::size_t length = 0; length < 200; ++length) {
        all += digest(std::string(length, 'q'), 1000);
        for (const std::size_t piece : {1u, 3u, 63u, 64u, 65u})
            ASSERT_EQ(digest(std::string(length, 'q'), piece), all.substr(length * 32)) << length;
    }
    EXPECT_EQ(digest(all, 1000), "1bd2644991fac1fd63049272c9ad7c90");
    MD5_CTX context = {{0xfffffe00, 0}, {}, {}, {}};
    MD5Update(&context, reinterpret_cast<const unsigned char*>(std::string(65, 'q').data()), 65);
    EXPECT_EQ(context.bits[1], 1u) << "the count of bits carries";
}

// Lengths across both ways of padding and across several buffers; reads of odd sizes; some that fail half-way.
struct odd_messages : md5_messages {
    static constexpr std::size_t count = 400;
    std::vector<std::string> texts, signatures = std::vector<std::string>(count, "never signed");
    std::vector<std::size_t> at = std::vector<std::size_t>(count);
    odd_messages() {
        for (std::size_t i = 0; i < count; ++i) {
            texts.emplace_back(i % 9 == 0 ? 40000 + i * 997 : i, 'q');
            for (std::size_t k = 0; k < texts[i].size(); ++k)
                texts[i][k] = static_cast<char>(k * k * (i + 1) >> 3);
        }
    }
    std::size_t some = 0, begun = 0;
    bool next(std::size_t& i) override { return (i = begun++) < some; }
    static bool fails(std::size_t i) { return i % 31 == 7; }
    std::ptrdiff_t read(std::size_t i, unsigned char* to, std::size_t room) override {
        const std::size_t take = std::min({room, texts[i].size() - at[i], i % 3 ? room : 777});
        if (fails(i) && at[i] + take == texts[i].size()) return -1;
        std::memcpy(to, texts[i].data() + at[i], take);
        at[i] += take;
        return static_cast<std::ptrdiff_t>(take);
    }
    void signed_as(std::size_t i, const std::string& signature) override { signatures[i] = signature; }
};

TEST(md5_lanes, sign_as_one_by_one_by_every_means) {
    for (const md5_means means : {md5_means::alone, md5_means::avx2, md5_means::avx512}) {
        if (means > best_md5_means()) continue;
        for (const std::size_t some : {std::size_t{0}, std::size_t{1}, std::size_t{5}, odd_messages::count}) {
            odd_messages all;
            all.some = some;
            md5_sign_all(all, means);
            for (std::size_t i = 0; i < some; ++i)
                ASSERT_EQ(all.signatures[i], all.fails(i) ? "" : digest(all.texts[i], 50000)) << i << " of " << some;
        }
    }
}

TEST(signature, files_links_and_what_cannot_be_read) {
    scratch box;
    std::string sig = "NONE";
    box.write("Foo.txt", "abc");
    mkfifo((box / "pipe").c_str(), 0600);
    const struct {
        std::string path;
        int code;
    } unsigned_ones[] = {
        {box / "missing", err_file_open},
        {box / "foo.txt", err_file_open},  // another spelling is another file
        {box / "Foo.txt/below", err_file_open},
        {box / "", EISDIR},
        {box / "pipe", err_no_file},
        {"/dev/zero", err_no_file},
        {"/proc/self/mem", EIO},  // opens, and fails to be read as one on a bad sector does
        {box / std::string(300, 'x'), ENAMETOOLONG},
    };
    for (const auto& one : unsigned_ones)
        EXPECT_EQ(calc_file_md5(one.path, sig), one.code) << one.path;
    EXPECT_EQ(sig, "NONE");
    EXPECT_EQ(calc_file_md5(box / "Foo.txt", sig), 0);
    EXPECT_EQ(sig, "900150983cd24fb0d6963f7d28e17f72");
    std::filesystem::create_symlink("message digest", box / "dangling");
    EXPECT_EQ(calc_file_md5(box / "dangling", sig), 0);
    EXPECT_EQ(sig, "f96b697d7cb7938d525a2f31aaf161d0");
    std::filesystem::resize_file(box / "Foo.txt", 0);
    std::filesystem::resize_file(box / "Foo.txt", (1 << 26) + 77);  // more than one piece, and no disk
    EXPECT_EQ(calc_file_md5(box / "Foo.txt", sig), 0);
    EXPECT_EQ(sig, "3e3e5a35ec430071b09d076bd6eb86e0");
}
