// Disks that fill up and limits on file sizes: a picture that could not be written is empty, those before it
// are whole, and the log never matters.
#include <doctest/doctest.h>

#include <filesystem>
#include <sstream>

#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "tests/trust/job.h"

namespace {

size_t size_of(const std::string &path) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    return error ? 0 : size;
}

// Judges a run whose outputs met a limit: the first that did not fit is empty, the others are whole or
// absent. Returns whether all fitted.
bool check_outputs(const Job &job, const Outcome &outcome, const Pictures &want, const std::string &reason) {
    const Pictures got = job.outputs();
    const std::string *const is[] = {&got.rgb, &got.dc, &got.gain};
    const std::string *const should[] = {&want.rgb, &want.dc, &want.gain};
    const std::string paths[] = {job.args[RGB], job.args[DC], job.args[GAIN]};
    CHECK(outcome.out == "");
    for (int i = 0; i < 3; i++) {
        if (*is[i] == *should[i])
            continue;
        CHECK(outcome.status == 1);
        CHECK(outcome.err == "Unable to write file '" + paths[i] + "': " + reason + "\n");
        CHECK(*is[i] == "");
        for (int after = i + 1; after < 3; after++)
            CHECK(*is[after] == "(no file)");
        return false;
    }
    CHECK(outcome.status == 0);
    CHECK(outcome.err == "");
    return true;
}

// A disk of 2 MB, mounted in a name space of this process alone. False where that is not allowed.
bool mount_small_disk(const std::string &folder) {
    if (unshare(CLONE_NEWNS) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
        return false;
    mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
    return mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=2m,mode=777") == 0;
}

// Leaves this much room on the disk. For a process of its own, which it ends where that is not possible.
void leave_room(const std::string &folder, size_t bytes) {
    std::filesystem::remove(folder + "/filler");
    struct statvfs disk;
    const bool known = statvfs(folder.c_str(), &disk) == 0;
    const size_t free_bytes = disk.f_bavail * disk.f_bsize;
    if (!known || free_bytes < bytes)
        _exit(11);
    write_file(folder + "/filler", std::string(free_bytes - bytes, 'f'));
}

const std::string no_space = "No space left on device";

// Pages that the outputs need; with fewer they are judged. The outputs go to files beside the disk
// afterwards.
int pages_of_outputs(Job &job, const Pictures &want, const std::string &disk) {
    job.args[RGB] = disk + "/rgb";
    job.args[DC] = disk + "/dc";
    job.args[GAIN] = disk + "/gain";
    int pages = 0;
    for (bool fits = false; !fits; pages++) {
        INFO(pages, " pages left");
        job.remove_outputs();
        leave_room(disk, static_cast<size_t>(pages) * 4096);
        fits = check_outputs(job, job.run(), want, no_space);
        if (pages > 30)
            _exit(10);
    }
    job.remove_outputs();
    for (const Argument output : {RGB, DC, GAIN})
        job.args[output] = job.folder / std::to_string(output);
    return pages - 1;
}

// The image that did not fit is empty and named, the others are whole, no output is begun.
void check_images(const Job &job, const Outcome &outcome, const std::string &folder) {
    int empty = 0;
    for (const auto &file : std::filesystem::directory_iterator(folder)) {
        const std::string text = read_file(file.path());
        empty += text.empty();
        if (text.empty())
            CHECK(outcome.err == "Unable to write file '" + file.path().string() + "': " + no_space + "\n");
        else
            CHECK(text.size() > 64u * 48 * (text[1] == '6' ? 3 : 1));
    }
    CHECK(empty == (outcome.status == 0 ? 0 : 1));
    CHECK(std::filesystem::exists(job.args[RGB]) == (outcome.status == 0));
}

int pages_of_debug_images(Job &job, const std::string &disk) {
    job.args[DEBUG] = "1";
    job.args[DEBUG_FOLDER] = disk + "/debug";
    int pages = 0;
    for (int status = 1; status != 0; pages++) {
        INFO(pages, " pages left for debug images");
        std::filesystem::remove_all(job.args[DEBUG_FOLDER]);
        std::filesystem::create_directory(job.args[DEBUG_FOLDER]);
        leave_room(disk, static_cast<size_t>(pages) * 4096);
        const Outcome outcome = job.run();
        status = outcome.status;
        check_images(job, outcome, job.args[DEBUG_FOLDER]);
        if (pages > 300)
            _exit(10);
    }
    return pages - 1;
}

} // namespace

TEST_CASE("file size limits of every kind") {
    Job job(mosaic(16, 12, 4095, 1), all_stages_ini());
    const Pictures want = job.expected();
    const size_t largest = want.rgb.size();
    int limited = 0;
    Thin thin(23);
    for (size_t limit = 0; limit <= largest + 1; limit++) {
        const bool edge =
            limit < 2 || limit + 2 > largest || limit == want.dc.size() || limit + 1 == want.dc.size();
        if (!thin.take() && !edge)
            continue;
        INFO("limit of ", limit, " bytes");
        job.remove_outputs();
        std::filesystem::remove(job.args[LOG]);
        const Outcome outcome = job.run(60000, [limit] {
            const rlimit bound = {limit, limit};
            setrlimit(RLIMIT_FSIZE, &bound);
        });
        // Error lines go to a file here too; the limit holds for them as well, but no log.
        CHECK(outcome.status == (limit < largest ? 1 : 0));
        CHECK(job.outputs().rgb == (limit < largest ? "" : want.rgb));
        CHECK(size_of(job.args[DC]) == (limit < largest ? 0 : want.dc.size()));
        CHECK(size_of(job.args[LOG]) <= limit);
        limited += limit < largest;
    }
    CHECK(limited > 4);
}

TEST_CASE("a small disk fills up behind every page of outputs and of debug images; the log does not matter") {
    const Outcome child = run_child(
        [] {
            Job job(mosaic(64, 48, 4095, 1), all_stages_ini());
            const Pictures want = job.expected();
            const std::string disk = job.folder / "disk";
            std::filesystem::create_directory(disk);
            if (!mount_small_disk(disk)) {
                std::puts("no mount allowed: not tested");
                return;
            }
            const int outputs = pages_of_outputs(job, want, disk);
            const int images = pages_of_debug_images(job, disk);
            CHECK(job.outputs() == want);
            job.remove_outputs();
            job.args[DEBUG] = "0";
            job.args[LEVEL] = "0";
            job.args[LOG] = disk + "/log";
            leave_room(disk, 4096);
            check_silent(job.run());
            CHECK(job.outputs() == want);
            CHECK(size_of(job.args[LOG]) == 4096);
            std::printf("outputs fit from page %d on, debug images from page %d on\n", outputs, images);
        },
        120000);
    CHECK(child.status == 0);
    // Nothing else: what a check in the child has to say would stand there too.
    const std::string said = child.out;
    INFO(said);
    CHECK(matches(said, "outputs fit from page [0-9]+ on, debug images from page [0-9]+ on\n|"
                        "no mount allowed: not tested\n"));
    MESSAGE(said);
}

TEST_CASE("a full device behind every file: outputs and debug images end with 1, the log does not") {
    Job job(mosaic(64, 48, 4095, 1), all_stages_ini());
    const Pictures want = job.expected();
    for (const Argument output : {RGB, DC, GAIN}) {
        Job failing(mosaic(64, 48, 4095, 1), all_stages_ini());
        failing.args[output] = failing.folder / "full";
        std::filesystem::create_symlink("/dev/full", failing.args[output]);
        check_error(failing.run(), "Unable to write file '" + failing.args[output] + "': " + no_space);
        CHECK((output == RGB || read_file(failing.args[RGB]) == want.rgb));
        CHECK((output != GAIN || read_file(failing.args[DC]) == want.dc));
    }
    job.args[DEBUG] = "1";
    check_silent(job.run());
    std::vector<std::string> images;
    for (const auto &file : std::filesystem::directory_iterator(job.folder.path))
        if (file.path().filename().string().starts_with("dbg_"))
            images.push_back(file.path());
    CHECK(images.size() > 20);
    for (const std::string &image : images) {
        job.remove_outputs();
        std::filesystem::remove(image);
        std::filesystem::create_symlink("/dev/full", image);
        check_error(job.run(), "Unable to write file '" + image + "': " + no_space);
        CHECK_FALSE(std::filesystem::exists(job.args[RGB]));
        std::filesystem::remove(image);
    }
}
