// Where pictures and settings may lie, and what surrounds the process: names, links, FIFOs, devices, rights,
// descriptors, environment.
#include <doctest/doctest.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include <fcntl.h>
#include <grp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/tool.h"

namespace {

namespace fs = std::filesystem;

const Argument FILES[] = {INI, LOG, TOP_INI, RAW, RGB, DC, GAIN};

// Moves the files of a job to the places that this makes of their names.
void move(Job &job, const std::function<std::string(const std::string &)> &to) {
    for (const Argument file : FILES) {
        const std::string from = std::exchange(job.args[file], to(fs::path(job.args[file]).filename()));
        fs::create_directories(fs::path(job.args[file]).parent_path());
        if (fs::exists(from))
            fs::rename(from, job.args[file]);
    }
}

// A path of this length in the folder.
std::string path_of_length(std::string folder, size_t length, char last) {
    while (folder.size() + 200 < length)
        folder += "/" + std::string(99, 'd');
    return folder + "/" + std::string(length - folder.size() - 1, last);
}

// From here on the process is nobody's; the superuser may do everything.
void become_nobody() {
    if (getuid() == 0 && (setgroups(0, nullptr) != 0 || setgid(65534) != 0 || setuid(65534) != 0))
        _exit(99);
    prctl(PR_SET_DUMPABLE, 1); // as a program has it that nobody started
}

std::string make_fifo(const Job &job, const char *name) {
    REQUIRE(mkfifo((job.folder / name).c_str(), 0600) == 0);
    return job.folder / name;
}

} // namespace

TEST_CASE("names of any characters, paths of 1023 to 4095; what messages show of them") {
    const std::string raw = mosaic(8, 6);
    const Pictures want = Job(raw, ALL_STAGES).expected();
    for (const std::string name : {"a b", "a\nb", "%s%n%d%%", "'\"\\$(x)`;&", "-", "\xFF\xC3(", "\x1B[2J",
                                   "255", "1023", "1024", "4095"}) {
        INFO(name);
        Job job(raw, ALL_STAGES);
        const size_t length = static_cast<size_t>(std::atoi(name.c_str()));
        move(job, [&](const std::string &file) {
            return length == 0 ? job.folder / name + "/" + file + name
                   : length < 300
                       ? job.folder / file + "." + std::string(length - file.size() - 1, 'n')
                       : path_of_length(job.folder.path, length, file.back() == 'c' ? 'C' : file[0]);
        });
        job.args[DEBUG_FOLDER] = fs::path(job.args[RAW]).parent_path();
        job.args[DEBUG] = length > 300 ? "0" : "1";
        check_silent(job.run());
        CHECK(job.outputs() == want);
        CHECK((length > 300 || fs::file_size(job.args[DEBUG_FOLDER] + "/dbg_img_AvgRGB.ppm") > 8 * 6 * 3));
        CHECK(job.log().size() > 200);
        write_file(job.args[RAW], "P5\n4 3\n-1\n");
        check_error(job.run(), "Invalid max_rgb (error loading '" + job.args[RAW] + "')");
        fs::remove(job.args[RAW]);
        check_waits(job, job.args[RAW]);
    }
    Job endless(raw);
    endless.args[GAIN] = std::string(5000, 'x');
    check_waits(endless, endless.args[GAIN]);
    endless.args[LOG] = endless.args[GAIN];
    check_error(endless.run(), "Unable to open log file '" + endless.args[LOG] + "'");
}

TEST_CASE("a debug path is cut at 1023 characters, folder and all") {
    Job job(mosaic(8, 6));
    job.args[DEBUG] = "1";
    const std::string longest = path_of_length(job.folder.path, 1023, 'f');
    fs::create_directories(longest);
    for (const std::string &folder : {longest, longest + "more", longest + std::string(4000, 'x')}) {
        job.args[DEBUG_FOLDER] = folder;
        check_waits(job, longest); // no room for a name: a folder cannot be written to
    }
    job.args[DEBUG_FOLDER] = path_of_length(job.folder.path, 1010, 'g');
    fs::create_directories(job.args[DEBUG_FOLDER]);
    check_silent(job.run());
    CHECK(fs::exists(job.args[DEBUG_FOLDER] + "/dbg_img_AvgR")); // 1023 characters of .../dbg_img_AvgRGB.ppm
}

TEST_CASE("what is waited for is used when it comes") {
    const std::string raw = mosaic(8, 6);
    const Pictures want = Job(raw).expected();
    for (const Argument argument : {RAW, RGB, DC, GAIN, DEBUG_FOLDER}) {
        Job job(raw);
        const std::string late = job.folder / "late";
        const std::string waited = late + (argument == DEBUG_FOLDER ? "/dbg_img_AvgRGB.ppm" : "/picture");
        job.args[argument] = argument == DEBUG_FOLDER ? late : waited;
        job.args[DEBUG] = argument == DEBUG_FOLDER ? "1" : "0";
        fs::create_directory(job.folder / "soon");
        if (argument == RAW)
            write_file(job.folder / "soon/picture", raw);
        Process process([&] { job.become_tool(); });
        process.said();
        fs::rename(job.folder / "soon", late);
        const Outcome outcome = process.wait();
        CHECK(outcome.status == 0);
        CHECK(outcome.out + outcome.err == "wait pre frame ready " + waited + "\n" + waited + " ready\n");
        CHECK(job.outputs() == want);
    }
}

TEST_CASE(
    "what the user may not open: pictures are waited for, settings keep their defaults, a log is an error") {
    struct Case {
        Argument argument;
        const char *path;
    };
    for (const Case &c : {Case{RAW, "raw"}, Case{RGB, "sealed/picture"}, Case{DC, "protected"},
                          Case{DEBUG_FOLDER, "sealed"}, Case{LOG, "sealed/log"}, Case{INI, "cfa.ini"}}) {
        Job job(mosaic(8, 6), ALL_STAGES);
        const std::string path = job.args[c.argument] = job.folder / c.path;
        INFO(path);
        job.args[DEBUG] = c.argument == DEBUG_FOLDER ? "1" : "0";
        write_file(job.folder / "protected", "before");
        fs::create_directory(job.folder / "sealed");
        fs::permissions(job.folder / "protected", fs::perms(0444));
        fs::permissions(job.folder / "sealed", fs::perms(0555));
        fs::permissions(job.args[c.argument == INI ? INI : RAW],
                        fs::perms(c.argument == INI || c.argument == RAW ? 0 : 0444));
        fs::permissions(job.folder.path, fs::perms(0777));
        if (c.argument == LOG) {
            check_error(job.run(become_nobody), "Unable to open log file '" + path + "'");
        } else if (c.argument == INI) {
            check_silent(job.run(become_nobody));
            const auto log = job.log();
            CHECK(std::any_of(log.begin(), log.end(), [](const std::string &record) {
                return record.ends_with(": Can't handle cfa_reg.");
            }));
            CHECK(std::none_of(log.begin(), log.end(), [](const std::string &record) {
                return record.ends_with("cfa.hw.reg_cfa_enable is not set in .ini file");
            }));
        } else {
            check_waits(job, c.argument == DEBUG_FOLDER ? path + "/dbg_img_AvgRGB.ppm" : path, become_nobody);
        }
        CHECK(read_file(job.folder / "protected") == "before");
    }
}

TEST_CASE(
    "FIFOs carry the bytes of files, in any pieces; two runs may share one, and its reader may go away") {
    const std::string raw = mosaic(300, 200); // more than a FIFO holds at once
    const Job plain(raw, ALL_STAGES);
    const Pictures want = plain.expected();
    Job piped("");
    for (const Argument argument : {INI, RAW, RGB, DC, GAIN})
        piped.args[argument] = make_fifo(piped, ("fifo" + std::to_string(argument)).c_str());
    Process run([&] { piped.become_tool(); });
    write_file(piped.args[INI], ALL_STAGES);
    const int fd = open(piped.args[RAW].c_str(), O_WRONLY);
    for (size_t at = 0; at < raw.size(); at += 999)
        CHECK(write(fd, &raw[at], std::min<size_t>(999, raw.size() - at)) > 0);
    close(fd);
    CHECK((piped.outputs() == want));
    check_silent(run.wait());

    Job producer(raw, ALL_STAGES), consumer("", ALL_STAGES);
    producer.args[DC] = consumer.args[RAW] =
        make_fifo(producer, "fifo"); // with a lock each would wait for the other
    Process other([&] { producer.become_tool(); });
    check_silent(consumer.run());
    check_silent(other.wait());
    CHECK((consumer.outputs() == Job(want.dc, ALL_STAGES).expected()));

    Job job(raw);
    job.args[RGB] = make_fifo(job, "fifo");
    Process broken([&] { job.become_tool(); });
    const int reader = open(job.args[RGB].c_str(), O_RDONLY);
    char byte;
    CHECK(read(reader, &byte, 1) == 1);
    close(reader);
    check_error(broken.wait(), "Unable to write file '" + job.args[RGB] + "': Broken pipe");
    CHECK_FALSE(fs::exists(job.args[DC]));
}

TEST_CASE("links stay links, devices are what they are; the input may be an output under another name") {
    const std::string raw = mosaic(8, 6);
    const Pictures want = Job(raw, ALL_STAGES).expected();
    for (const char *before : {"", "a longer picture that was here before"}) {
        Job job(raw, ALL_STAGES);
        fs::create_symlink("target", job.folder / "link");
        fs::create_symlink(job.args[RAW], job.folder / "raw_link");
        job.args[RAW] = job.folder / "raw_link";
        job.args[DC] = job.folder / "link";
        if (*before != '\0')
            write_file(job.folder / "target", std::string(10000, *before));
        check_silent(job.run());
        CHECK(job.outputs() == want);
        CHECK(fs::is_symlink(job.args[DC]));
    }
    for (const Argument output : OUTPUTS) {
        Job job(raw, ALL_STAGES);
        job.args[output] = job.folder / "other name";
        fs::create_hard_link(job.args[RAW], job.args[output]);
        check_silent(job.run());
        CHECK(job.outputs() == want);
        CHECK(read_file(job.args[RAW]) == read_file(job.args[output]));
    }
    for (const char *device : {"/dev/null", "/dev/zero"}) {
        Job job("");
        job.args[RAW] = device;
        check_error(job.run(), device == std::string("/dev/null")
                                   ? "/dev/null: No data available"
                                   : "Invalid image format (must be 'P5') (error loading '/dev/zero')");
        job.args[RAW] = job.folder / "raw";
        write_file(job.args[RAW], raw);
        job.args[RGB] = job.args[DC] = job.args[INI] = "/dev/null";
        check_silent(job.run());
    }
}

TEST_CASE(
    "descriptors closed or full, locale, time zone, environment, working folder: pictures and log stay") {
    Job job(mosaic(8, 6), ALL_STAGES);
    check_silent(job.run());
    const Pictures want = job.outputs();
    const auto log = job.log();
    std::vector<std::function<void()>> surroundings = {
        [] { setenv("LC_ALL", "C.UTF-8", 1), setenv("LANGUAGE", "de", 1), setenv("TZ", ":/dev/zero", 1); },
        [] { setenv("LC_ALL", "no such locale", 1), setenv("TZ", "XYZ-99:99:99", 1); }, [] { clearenv(); },
        [gone = job.folder / "gone"] {
            if (mkdir(gone.c_str(), 0700) != 0 || chdir(gone.c_str()) != 0 || rmdir(gone.c_str()) != 0)
                _exit(99);
        }};
    for (int closed = 1; closed < 8; ++closed)
        for (const bool full : {false, true})
            surroundings.push_back([=] {
                for (int fd = 0; fd < 3; ++fd)
                    if ((closed >> fd & 1) != 0 &&
                        (close(fd) != 0 || (full && open("/dev/full", O_RDWR) != fd)))
                        _exit(99);
            });
    for (const bool built : {false, true})
        for (const auto &surrounding : surroundings) {
            job.built = built;
            job.clear();
            check_silent(job.run(surrounding));
            CHECK(job.outputs() == want);
            CHECK(job.log() == log);
        }
    job.clear();
    job.args[RAW] = job.folder / "none";
    Process waiting(
        [&] { job.become_tool([] { close(1), close(2); }); }); // a log on descriptor 1 would receive the line
    waiting.wait(300);
    CHECK(job.log() == std::vector(log.begin(), log.end() - 3)); // all before the picture

    Job here(mosaic(8, 6), ALL_STAGES);
    for (const Argument file : FILES)
        here.args[file] = fs::path(here.args[file]).filename();
    check_silent(here.run([&] { fs::current_path(here.folder.path); }));
    CHECK(read_file(here.folder / "rgb") == want.rgb);
    CHECK(read_file(here.folder / "gain") == want.gain);
}
