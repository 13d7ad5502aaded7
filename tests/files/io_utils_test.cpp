#include "files/io_utils.h"

#include <gtest/gtest.h>
#include <minizip/unzip.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <filesystem>

#include "files/error_str.h"
#include "files/xmap.h"
#include "runtime/hl_string.h"
#include "runtime/product.h"
#include "support/alerts.h"
#include "support/scratch.h"

using namespace std::string_literals;

TEST(paths, split_before_the_last_component) {
    const char* rows[][3] = {
        {"a/b/c.txt", "a/b/", "c.txt"}, {"a/b/", "a/", "b/"}, {"c.txt", "", "c.txt"}, {"", "", ""}};
    for (const auto& [full, dir, last] : rows) {
        std::string path = full;  // one string for both arguments
        get_path_with_path(path, path);
        EXPECT_EQ(path, dir);
        EXPECT_EQ(get_path_with_path_file, last);
    }
}

TEST(paths, existence_tells_files_from_folders_and_mends_case) {
    scratch box;
    box.write("Dir/File", "x");
    std::filesystem::create_symlink("nowhere", box / "dangling");
    EXPECT_TRUE(file_exists(box / "Dir/File") && file_exists(box / "dIR/fILE"));
    EXPECT_TRUE(dir_exists(box / "Dir/") && dir_exists(box / "DIR") && dir_exists("/"));
    EXPECT_FALSE(file_exists(box / "Dir") || file_exists(box / "dangling") || file_exists(box / "Dir/Other"));
    EXPECT_FALSE(dir_exists(box / "Dir/File") || dir_exists(box / "none/") || dir_exists(""));
    g_case_sensitive = 0;
    EXPECT_FALSE(file_exists(box / "dir/file"));
}

TEST(paths, mending_prefers_the_own_spelling_and_stops_where_nothing_fits) {
    scratch box;
    std::filesystem::current_path(box.path());
    const auto mended = [](const std::string& path) {
        char buffer[path_buffer_size];
        copy_to_path_buffer(buffer, path);
        findPath(buffer);
        return std::string(buffer);
    };
    // So many that the disk hardly lists each after all that come before it in the alphabet.
    const char* spellings[] = {"FOLDEr/", "FOlder/", "FoLDer/", "Folder/", "fOlDer/", "folDER/", "folder/"};
    for (const std::string folder : spellings)
        box.write(folder + "x", "");
    for (const std::string folder : spellings)
        EXPECT_EQ(mended(folder + "X"), folder + "x");
    box.write("Solo/a.TXT", "");
    EXPECT_EQ(mended("FOLDER/X"), "FOLDEr/x");
    EXPECT_EQ(mended(box / "solo//A.txt"), box / "Solo//a.TXT");
    EXPECT_EQ(mended("solo/none/A.txt"), "Solo/none/A.txt");
    EXPECT_EQ(mended("solo/a.txt/b"), "Solo/a.TXT/b");
    std::filesystem::current_path("/");
}

TEST(file_work, results_and_their_place) {
    scratch box;
    EXPECT_EQ(delete_file(""), ENOENT);
    EXPECT_EQ(sErrFile, "src/files/io_utils.cpp"s);
    EXPECT_EQ(make_folder(box / "a/"), 0);
    EXPECT_EQ(make_folder(box / "a"), EEXIST);
    EXPECT_EQ(make_folder(box / "b/c"), ENOENT);
    box.write("a/f", "x");
    EXPECT_EQ(delete_file(box / "a/"), ENOTEMPTY);
    EXPECT_EQ(delete_file(box / "a"), EISDIR) << "only a slash at the end says folder";
    EXPECT_EQ(delete_file(box / "a/F"), ENOENT) << "a deletion takes the exact spelling";
    EXPECT_EQ(rename_file(box / "a/", "f", "g"), 0);
    EXPECT_EQ(rename_file(box / "a/", "f", "g"), ENOENT);
    EXPECT_EQ(make_file_executable(box / "a/g"), 0);
    struct stat st;
    stat((box / "a/g").c_str(), &st);
    EXPECT_EQ(st.st_mode & 0777, 0755u);
    app_path = box / "a/";
    EXPECT_EQ(delete_file("g"), 0);
    EXPECT_EQ(delete_full_path(box / "a/"), 0);
    EXPECT_FALSE(show_make_dir_err(0) || show_make_dir_err(EEXIST) || show_make_dir_err(-48) || show_del_err(EACCES));
    EXPECT_EQ(show_make_dir_err(EACCES), 1);
}

TEST(data_files, header_extension_one_missing_folder_and_failures) {
    scratch box;
    std::filesystem::create_directory(box / "Output");
    ASSERT_EQ(ouf_open(box / "Output/x/FILE.TXT", file_text, 900, "no-copyright-string"), 1);
    ouf << 0.5 << " " << 1e9;
    // A second file while the first is open: there is one stream, so the first is closed.
    ASSERT_EQ(ouf_open(box / "Output/b.DAT", file_binary, 0x01020304, ""), 1);
    ouf.close();
    EXPECT_EQ(scratch::read(box / "Output/x/FILE.txt"), "I\n900 version\n0.500000 1000000000.000000");
    EXPECT_EQ(scratch::read(box / "Output/b.dat"), "i\4\3\2\1");
    ASSERT_EQ(ouf_open(box / "Output/b.dat", file_text, 1, " and more"), 1);
    ouf.close();
    EXPECT_EQ(scratch::read(box / "Output/b.dat"), "I\n1 version and more\n");

    alert_catcher alerts;
    EXPECT_EQ(ouf_open(box / "no/such/file.txt", file_text, 900, ""), 0);
    ASSERT_EQ(alerts.count(), 1u);
    EXPECT_EQ(alerts.seen[0].line2, box / "no/such/file.txt");
    EXPECT_FALSE(scratch::exists(box / "no"));
    EXPECT_EQ(ouf_open("/dev/full", file_text, 900, ""), 0) << "a full disk shows at once";
    EXPECT_EQ(ouf_open(box / "f.txt", file_text, 900, ""), 1) << "and the stream recovers";
}

TEST(error_texts, go_by_meaning_and_not_by_the_number_of_another_system) {
    EXPECT_EQ(error_str(EAGAIN), "Resource temporarily unavailable");
    EXPECT_EQ(error_str(EDEADLK), "Resource deadlock avoided");
    EXPECT_EQ(error_str(ENOTEMPTY), "Directory not empty");
    EXPECT_EQ(error_str(ENOLCK), "No locks available");
    EXPECT_EQ(error_str(-5000), "You have insufficient privileges for this operation");
    EXPECT_EQ(error_str(err_net_host), "We could not find the server over the network");
    EXPECT_EQ(error_str(ETIMEDOUT), "Connection timed out") << "the system's words where there are none of ours";
    EXPECT_EQ(error_str(UNZ_CRCERROR), "A zip file is damaged: the checksum of its content is wrong");
    for (const int unknown : {0, -999, 999999, 20013, 20014})
        EXPECT_EQ(error_str(unknown), "Unknown error occurred (" + std::to_string(unknown) + ")");
}

TEST(launch, the_new_program_gets_the_folder_and_a_whole_SIGPIPE_and_this_one_ends) {
    scratch box;
    const std::string program = box.write("tell", "#!/bin/sh\nprintf '%s|' $# \"$@\" > \"$0.out\"\nkill -PIPE $$\n");
    make_file_executable(program);
    signal(SIGPIPE, SIG_IGN);
    alert_catcher alerts;
    for (const auto& [arg, told] : {std::pair("/a folder/", "2|-path|/a folder/|"), std::pair("", "0|")}) {
        EXPECT_THROW(launch_app(program + "/", arg), left);
        int status = -1;
        EXPECT_GT(wait(&status), 0);
        EXPECT_EQ(WTERMSIG(status), SIGPIPE) << "what we ignore is no business of the new program";
        EXPECT_EQ(scratch::read(program + ".out"), told);
    }
}

TEST(windows_executables, the_flag_is_set_in_place_and_others_are_refused) {
    scratch box;
    std::string bytes(200, 'x');
    bytes.replace(0, 2, "MZ").replace(60, 4, "\x80\0\0\0"s).replace(128, 4, "PE\0\0"s).replace(150, 2, "\2\1"s);
    const std::string file = box.write("a.exe", bytes);
    ASSERT_EQ(make_file_large_address_aware(file), 0);
    EXPECT_EQ(scratch::read(file), std::string(bytes).replace(150, 1, "\x22"));

    const auto result = [&](const std::string& with) { return make_file_large_address_aware(box.write("b", with)); };
    EXPECT_EQ(result(bytes.substr(0, 63)), EIO);
    EXPECT_EQ(result("ZM" + bytes.substr(2)), err_not_mz);
    EXPECT_EQ(result(std::string(bytes).replace(128, 4, "PEPE")), err_not_pe);
    EXPECT_EQ(result(std::string(bytes).replace(60, 4, "\xff\xff\xff\xff")), EINVAL);
    EXPECT_EQ(make_file_large_address_aware(box / "none"), ENOENT);
}
