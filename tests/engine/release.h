// release.h: what the engine's tests share: a destination, a catalogue in the making, a mirror on the loopback, and a
// front that answers as it is told and keeps what it was asked.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "engine/choose.h"
#include "engine/directory.h"
#include "engine/dirs.h"
#include "engine/examine.h"
#include "engine/flow.h"
#include "engine/front.h"
#include "engine/grab.h"
#include "engine/stg.h"
#include "files/io_utils.h"
#include "files/md5.h"
#include "files/zip_io.h"
#include "net/http.h"
#include "net/server_list.h"
#include "platform/process.h"
#include "runtime/log.h"
#include "runtime/product.h"
#include "runtime/xtim.h"
#include "support/alerts.h"
#include "support/scratch.h"
#include "support/scripted_peer.h"

inline std::string signature_of(const std::string& bytes) {
    MD5_CTX md5;
    MD5Init(&md5);
    MD5UpdateWide(&md5, reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<std::uint32_t>(bytes.size()));
    MD5Final(&md5);
    return md5_hex(md5);
}

class release : public testing::Test {
  protected:
    release() {
        ignore_sigpipe();
        stg = stg_t{};
        next = next_t{};
        flow = flow_t{};
        sim_info.clear();
        app_done = this_install_has_exes = 0;
        dest_dir_path = disk / "dest/";
        temp_path = disk / "tmp/";
        mkdir(dest_dir_path.c_str(), 0755);
        mkdir(temp_path.c_str(), 0755);
        setenv("PATH", disk.path().c_str(), 1);  // nothing there opens a browser
        setenv("XDG_STATE_HOME", (disk / "state").c_str(), 1);
        questions = finished = "";
        answers.clear();
        front = {[] { return agrees; },
                 select_alert,
                 [](float, float, float, scan_phase, const std::string&, const std::string&) {},
                 file_finished,
                 [] { questions += "busy;"; },
                 [] { questions += "renamed;"; }};
        agrees = 1;
        xtim.xtim_update();
    }
    ~release() override { xer.close(); }

    // One row of the catalogue for a file of this content; "GONE" withdraws it.
    void row(const std::string& path, const std::string& content, int platform = 0, int zip_kb = 1, int ext_kb = 2) {
        const std::size_t slash = path.rfind('/') + 1;
        catalogue += "\nDIR " + path.substr(0, slash) + "\nFILE 0 " + std::to_string(platform) + " 90019 " +
                     std::to_string(zip_kb) + " " + std::to_string(ext_kb) + " " +
                     (content == "GONE" ? content : signature_of(content)) + " " + path.substr(slash) + "\n";
    }
    void history(const std::string& path, std::initializer_list<const char*> contents, int platform = 0) {
        for (const char* content : contents)
            row(path, content, platform);
    }
    // A row whose zip lies on the mirror: of a file, or of a link with this target.
    void shipped(const std::string& path, const std::string& content, bool link = false) {
        row(path, content);
        const std::string source = disk.write("reference/" + path, content);
        if (link && unlink(source.c_str()) + symlink(content.c_str(), source.c_str()) != 0) FAIL() << source;
        publish(path, source);
    }
    void publish(const std::string& path, const std::string& source) {
        ASSERT_EQ(file_to_zip(source, disk / "one.zip"), 0);
        served["/r/" + path + ".zip"] = scratch::read(disk / "one.zip");
    }
    int read(const std::string& header = "I\n900 version\nINSTALLER\n\n") {
        const std::string path = disk.write("tmp/directory.txt", header + catalogue);
        return read_directory(path, "label");
    }

    void put(std::initializer_list<std::pair<const char*, const char*>> files) const {
        for (const auto& [name, content] : files)
            disk.write(std::string("dest/") + name, content);
    }
    void put_link(const std::string& name, const std::string& target) const {
        ASSERT_EQ(symlink(target.c_str(), (dest_dir_path + name).c_str()), 0);
    }
    bool is_there(const std::string& name) const { return scratch::exists(dest_dir_path + name); }
    bool is_folder(const std::string& name) const { return dir_exists(dest_dir_path + name); }
    bool is_link(const std::string& name) const { return is_sim_link(dest_dir_path + name, nullptr); }
    // The contents of several files, one behind the other.
    std::string on_disk(std::initializer_list<const char*> names) const {
        std::string all;
        for (const char* name : names)
            all += scratch::read(dest_dir_path + name);
        return all;
    }
    std::string log_text() const {
        xer.flush();
        return scratch::read(disk / "log");
    }

    // The mirror: whatever is in `served`, 404 for the rest, and 503 for as many requests of a path as `failures` says.
    void open_mirror() {
        mirror = std::make_unique<scripted_peer>([this](const std::string& request) {
            return script().send(answer_to(request.substr(4, request.find(" HTTP/") - 4))).close();
        });
        stg.server_cnt = 1;
        server_list.server_name[0] = flow.list_host = mirror->host();
        server_list.server_path[0] = "/r/";
    }
    // Everything up to the file work.
    void prepare() {
        ASSERT_EQ(read(), 3);
        make_dirs();
        ASSERT_EQ(choose_files() + clear_the_way(), 2);
        stream_reset();
        finished = requests = "";
    }
    static int run() {
        int result = 0;
        EXPECT_TRUE(poll_until([&] { return (result = grab_files()) != 0; }));
        return result;
    }
    // Polls until `over`, as a front end would; false when that takes suspiciously long.
    static bool poll_until(const std::function<bool()>& over) {
        for (const float start = xtim.real_time; xtim.real_time < start + 25; xtim.xtim_update()) {
            if (over()) return true;
            http.wait(1, -1);
        }
        return false;
    }

    scratch disk;
    alert_catcher alerts;
    std::string catalogue;
    std::map<std::string, std::string> served;
    std::map<std::string, int> failures;
    std::string requests;
    std::mutex mutex;
    std::unique_ptr<scripted_peer> mirror;

    static inline std::vector<int> answers;  // to questions about changed files, in their order; then 3
    static inline int agrees;
    static inline std::string questions;  // name and, for a removal, "-"
    static inline std::string finished;   // action, path, result

  private:
    std::string answer_to(std::string path) {  // on a thread of the mirror's
        for (std::size_t at = path.find("%20"); at != std::string::npos; at = path.find("%20"))
            path.replace(at, 3, " ");
        const std::scoped_lock lock(mutex);
        requests += path + ";";
        if (failures[path]-- > 0) return http_reply("503 Busy", "");
        const auto found = served.find(path);
        return found == served.end() ? http_reply("404 Not Found", "") : http_reply("200 OK", found->second);
    }
    static changed_answer select_alert(const std::string& file, bool removing, const std::string& trouble) {
        questions += file.substr(dest_dir_path.size()) + (removing ? "-" : "") + trouble + ";";
        if (answers.empty()) return changed_answer::cancel;
        const int answer = answers.front();
        answers.erase(answers.begin());
        return changed_answer{answer};
    }
    static void file_finished(int action, const std::string& path, int result) {
        finished += std::to_string(action) + path + ":" + std::to_string(result) + ";";
    }
};
