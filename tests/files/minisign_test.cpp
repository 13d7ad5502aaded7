// Signatures made by minisign itself, and everything about them that can be bent.
#include "files/minisign.h"

#include <gtest/gtest.h>

static const std::string key_file =
    "untrusted comment: minisign public key 6E1AB893629C2389\n"
    "RWSJI5xik7gabvfnQLfQtF8pjpin93hHuXRx+SbKjAhuZgNw1w2PpUsi\n";
static const std::string hashed =
    "untrusted comment: signature from minisign secret key\n"
    "RUSJI5xik7gabtvdRXuegEVi8+hnm7MRDmVEpwCGB6e+144En6kZyWT7frLsLSmMBix488qLhG1pIA5ZvFFtUxDQOV6SQ0ot/gw=\n"
    "trusted comment: name:N\tnumber:90019\texpires:1999999999\n"
    "arv38tK1WxXcermAjR9wylaQ2sciDH94IIPZSF0+ZKgRC3eSDrKcfSHVPDDs9+jQnlbiwDlV2q+OkLvDHdu2Cg==\n";
static const std::string plain =
    "untrusted comment: signature from minisign secret key\n"
    "RWSJI5xik7gabjFw6MEftRfpe4bJhyWLTBBOqRPDuz5/mRAnADYtf/EQA7B9R9dmCUNowv3ogwSZxsH5+NGKUeEfLJ8nwFb8Wg8=\n"
    "trusted comment: timestamp:1795446724\tfile:f\n"
    "ikfmURhfY1GJ3cIAVqPDvUBR2VZumXgbcP5a0NJB3PWQo59iFJv2E8+mHjoBkUNuNXNa4cyLCtoueb+lZymRBg==\n";

static std::string with(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

TEST(minisign, takes_what_the_key_signed_and_nothing_else) {
    minisign_key key{}, other{};
    ASSERT_TRUE(read_minisign_key(key_file, key));
    EXPECT_EQ(minisign_key_name(key), "6E1AB893629C2389");
    ASSERT_TRUE(read_minisign_key("RWSJI5xik7gabvfnQLfQtF8pjpin93hHuXRx+SbKjAhuZgNw1w2PpUsi", key)) << "its line alone";
    other = key;
    other.name[0] ^= 1;

    typedef minisign_result result;
    const struct {
        const char* what;
        std::string signature, bytes;
        std::vector<minisign_key> keys;
        result expected;
    } cases[] = {
        {"over a digest", hashed, "hello\n", {key}, result::good},
        {"over the bytes", plain, "hello\n", {key}, result::good},
        {"the second of two keys", hashed, "hello\n", {other, key}, result::good},
        {"lines of another system", with(hashed, "=\ntr", "=\r\ntr"), "hello\n", {key}, result::good},
        {"other bytes", hashed, "hello", {key}, result::false_signature},
        {"other bytes, older form", plain, "hell0\n", {key}, result::false_signature},
        {"another number", with(hashed, "90019", "90020"), "hello\n", {key}, result::false_signature},
        {"a bit of the signature", with(hashed, "7frL", "7frM"), "hello\n", {key}, result::false_signature},
        {"called the older form", with(hashed, "RUSJ", "RWSJ"), "hello\n", {key}, result::false_signature},
        {"no key of ours", hashed, "hello\n", {other}, result::other_key},
        {"no key at all", hashed, "hello\n", {}, result::other_key},
        {"an unknown form", with(hashed, "RUSJ", "RVSJ"), "hello\n", {key}, result::no_signature},
        {"cut", hashed.substr(0, hashed.size() - 9), "hello\n", {key}, result::no_signature},
        {"no comment", with(hashed, "trusted comment: name", "name"), "hello\n", {key}, result::no_signature},
        {"nothing", "", "hello\n", {key}, result::no_signature},
        {"a page of words", "<html>\nNot\nFound\n</html>\n", "hello\n", {key}, result::no_signature},
    };
    for (const auto& one : cases) {
        std::string comment = "untouched";
        EXPECT_EQ(check_minisign(one.signature, one.bytes, one.keys, comment), one.expected) << one.what;
        EXPECT_EQ(comment == "untouched", one.expected != result::good) << one.what;
    }
    for (const char* text : {"", "untrusted comment: none", "RWSJI5xik7gabvfnQLfQtF8pjpin93hHuXRx+SbKjAhuZgNw1w2PpUs",
                             "RUSJI5xik7gabvfnQLfQtF8pjpin93hHuXRx+SbKjAhuZgNw1w2PpUsi", "%%%%"})
        EXPECT_FALSE(read_minisign_key(text, key)) << text;
}

TEST(minisign, values_of_the_trusted_comment) {
    const std::string comment = "timestamp:1\tname:a file\thashed\tname:Velaris 9.0\tnumber:90019\tempty:";
    EXPECT_EQ(trusted_value(comment, "name"), "Velaris 9.0") << "the release's own stands last";
    EXPECT_EQ(trusted_value(comment, "number"), "90019");
    for (const char* name : {"empty", "hashed", "stamp", "numb", ""})
        EXPECT_EQ(trusted_value(comment, name), "") << name;
}
