// Where pictures and settings may lie: names of any characters and length, links, FIFOs, devices, folders;
// and the wait for what cannot be opened.
#include <doctest/doctest.h>

#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/trust/job.h"

namespace {

size_t count(const std::string &text, const std::string &part) {
    size_t found = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        found++;
    return found;
}

// Runs the action in a process of its own after a while.
pid_t later(int milliseconds, const std::function<void()> &action) {
    const pid_t pid = fork();
    if (pid == 0) {
        usleep(static_cast<useconds_t>(milliseconds) * 1000);
        action();
        _exit(0);
    }
    return pid;
}

// A path of this length below the folder, all of its folders made.
std::string path_of_length(const std::string &folder, size_t length) {
    std::string path = folder + "/";
    while (path.size() + 200 < length)
        path += std::string(99, 'd') + "/";
    std::filesystem::create_directories(path);
    return path + std::string(length - path.size(), 'f');
}

} // namespace

TEST_CASE("names with blanks, line feeds, percent signs, quotes, bytes beyond ASCII, 255 characters") {
    Job job(mosaic(8, 6, 4095, 1), all_stages_ini());
    const Pictures want = job.expected();
    for (const std::string &name :
         {std::string("a b"), std::string("a\nb"), std::string("%s%n%d%%"), std::string("'\"\\$(x)`;&"),
          std::string("-"), std::string("\xFF\xC3("), std::string("\x1B[2J"), std::string(255, 'n')}) {
        INFO(name);
        const std::string folder = job.folder / name;
        std::filesystem::create_directory(folder);
        Job moved("");
        std::filesystem::copy_file(job.args[RAW], folder + "/raw" + name.substr(0, 200));
        std::filesystem::copy_file(job.args[INI], folder + "/ini" + name.substr(0, 200));
        for (const auto &[argument, file] :
             {std::pair{INI, "ini"}, {LOG, "log"}, {RAW, "raw"}, {RGB, "rgb"}, {DC, "dc"}, {GAIN, "gain"}})
            moved.args[argument] = folder + "/" + file + name.substr(0, 200);
        moved.args[DEBUG] = "1";
        moved.args[DEBUG_FOLDER] = folder;
        check_silent(moved.run());
        CHECK(moved.outputs() == want);
        CHECK(std::filesystem::file_size(folder + "/dbg_img_AvgRGB.ppm") > 8 * 6 * 3);

        // Messages show the name as it is.
        write_file(moved.args[RAW], "P5\n4 3\n-1\n");
        check_error(moved.run(), "Invalid max_rgb (error loading '" + moved.args[RAW] + "')");
        std::filesystem::remove(moved.args[RAW]);
        check_waits(moved, moved.args[RAW]);
    }
}

TEST_CASE("paths of 1023, 1024 and 4095 characters; of 5000 nothing can be opened") {
    Job job(mosaic(8, 6, 4095, 1));
    const Pictures want = job.expected();
    for (const size_t length : {1023u, 1024u, 4095u}) {
        INFO(length);
        const TempFolder folder;
        Job deep("");
        int number = 0;
        for (const Argument argument : {INI, LOG, RAW, RGB, DC, GAIN})
            deep.args[argument] = path_of_length(folder / std::to_string(number++), length);
        write_file(deep.args[RAW], read_file(job.args[RAW]));
        check_silent(deep.run());
        CHECK(deep.outputs() == want);
        CHECK(count(read_file(deep.args[LOG]), "reg_cfa_enable = 1") == 1);
    }
    const std::string endless(5000, 'x');
    for (const Argument argument : {RAW, RGB, DC, GAIN}) {
        Job waiting = Job(mosaic(8, 6, 4095, 1));
        waiting.args[argument] = endless;
        check_waits(waiting, endless);
    }
    Job without_log("");
    without_log.args[LOG] = endless;
    check_error(without_log.run(), "Unable to open log file '" + endless + "'");
}

TEST_CASE("a debug path is cut at 1023 characters, folder and all") {
    Job job(mosaic(8, 6, 4095, 1));
    job.args[DEBUG] = "1";
    const std::string longest = path_of_length(job.folder.path, 1023);
    std::filesystem::create_directory(longest);
    for (const std::string &folder : {longest, longest + "more", longest + std::string(4000, 'x')}) {
        job.args[DEBUG_FOLDER] = folder;
        check_waits(job, longest); // no room for a name: a folder cannot be written to
    }
    const std::string short_one = path_of_length(job.folder.path, 1010);
    std::filesystem::create_directory(short_one);
    job.args[DEBUG_FOLDER] = short_one;
    check_silent(job.run());
    CHECK(std::filesystem::exists(short_one + "/dbg_img_AvgR")); // 1023 characters of .../dbg_img_AvgRGB.ppm
}

TEST_CASE("what is waited for is used when it comes: input, output folder, debug folder") {
    Job job(mosaic(8, 6, 4095, 1));
    const Pictures want = job.expected();
    const std::string late = job.folder / "late";
    const auto nothing = [] {};
    const auto check_served = [&](Argument argument, const std::string &path, const std::string &waited,
                                  const std::function<void()> &before, const std::function<void()> &action) {
        Job waiting = Job(mosaic(8, 6, 4095, 1));
        waiting.args[argument] = path;
        waiting.args[DEBUG] = argument == DEBUG_FOLDER ? "1" : "0";
        Outcome outcome;
        for (const int delay : {100, 1000, 8000}) { // longer where the tool was not there yet to wait
            std::filesystem::remove_all(late);
            before();
            const pid_t helper = later(delay, action);
            outcome = waiting.run();
            waitpid(helper, nullptr, 0);
            if (outcome.out != "")
                break;
        }
        CHECK(outcome.status == 0);
        CHECK(outcome.err == "");
        CHECK(outcome.out == "wait pre frame ready " + waited + "\n" + waited + " ready\n");
        CHECK(waiting.outputs() == want);
        std::filesystem::remove_all(late);
    };
    const auto make_folder = [&] { std::filesystem::create_directory(late); };
    check_served(RAW, late, late, nothing, [&] {
        std::filesystem::copy_file(job.args[RAW], job.folder / "almost");
        std::filesystem::rename(job.folder / "almost", late);
    });
    for (const Argument argument : {RGB, DC, GAIN})
        check_served(argument, late + "/out", late + "/out", nothing, make_folder);
    check_served(DEBUG_FOLDER, late, late + "/dbg_img_AvgRGB.ppm", nothing, make_folder);
    std::filesystem::create_symlink(late, job.folder / "loop");
    check_served(
        DC, late, late, [&] { std::filesystem::create_symlink(job.folder / "loop", late); },
        [&] { std::filesystem::remove(late); });
}

TEST_CASE("a folder or /dev/null as INI file leaves the defaults and says so of every register") {
    Job job(mosaic(8, 6, 4095, 1));
    const Pictures want = job.expected();
    for (const std::string &path : {job.folder.path, std::string("/dev/null")}) {
        job.args[INI] = job.args[TOP_INI] = path;
        std::filesystem::remove(job.args[LOG]);
        check_silent(job.run());
        CHECK(job.outputs() == want);
        const std::string log = read_file(job.args[LOG]);
        CHECK(count(log, "[REG] cfa.hw.") == 115);
        CHECK(count(log, "[REG] cmodel_top.hw.") == 11);
        CHECK(count(log, " is not set in .ini file\n") == 126);
    }
}

TEST_CASE("devices as input: nothing to read, or not a picture") {
    Job job("");
    job.args[RAW] = "/dev/null";
    check_error(job.run(), "/dev/null: No data available");
    for (const char *endless : {"/dev/zero", "/dev/full"}) {
        job.args[RAW] = endless;
        check_error(job.run(),
                    std::string("Invalid image format (must be 'P5') (error loading '") + endless + "')");
    }
}

TEST_CASE("FIFOs as input, INI file and outputs carry the bytes of files") {
    Job job(mosaic(300, 200, 4095, 1), all_stages_ini()); // more than a FIFO holds at once
    const Pictures want = job.expected();
    Job piped("");
    const auto make_fifo = [&](Argument argument) {
        piped.args[argument] = piped.folder / ("fifo" + std::to_string(argument));
        REQUIRE(mkfifo(piped.args[argument].c_str(), 0600) == 0);
    };
    for (const Argument argument : {INI, RAW, RGB, DC, GAIN})
        make_fifo(argument);
    const pid_t helper = later(0, [&] {
        for (const Argument argument : {INI, RAW})
            write_file(piped.args[argument], read_file(job.args[argument]));
        for (const Argument argument : {RGB, DC, GAIN})
            write_file(job.args[argument], read_file(piped.args[argument]));
    });
    check_silent(piped.run());
    waitpid(helper, nullptr, 0);
    CHECK(job.outputs() == want);
}

TEST_CASE("a FIFO between two runs: with a lock on their one file they would wait for each other") {
    Job producer(mosaic(300, 200, 4095, 1)); // more than a FIFO holds at once
    Job consumer(producer.expected().dc);
    const Pictures want = consumer.expected();
    producer.args[DC] = consumer.args[RAW] = producer.folder / "fifo";
    REQUIRE(mkfifo(producer.args[DC].c_str(), 0600) == 0);
    const pid_t helper = later(0, [&] { producer.run(); });
    check_silent(consumer.run());
    waitpid(helper, nullptr, 0);
    CHECK(consumer.outputs() == want);
}

TEST_CASE("an output FIFO whose reader goes away is a write error, not a signal") {
    Job job(mosaic(300, 200, 4095, 1));
    job.args[RGB] = job.folder / "fifo";
    REQUIRE(mkfifo(job.args[RGB].c_str(), 0600) == 0);
    const pid_t helper = later(0, [&] {
        const int fd = open(job.args[RGB].c_str(), O_RDONLY);
        char byte;
        _exit(read(fd, &byte, 1) == 1 ? 0 : 10);
    });
    check_error(job.run(), "Unable to write file '" + job.args[RGB] + "': Broken pipe");
    waitpid(helper, nullptr, 0);
    CHECK_FALSE(std::filesystem::exists(job.args[DC]));
}

TEST_CASE("links stay links; the input may be an output, by its name or by another") {
    Job job(mosaic(8, 6, 4095, 1), all_stages_ini());
    const std::string raw = read_file(job.args[RAW]);
    const Pictures want = job.expected();
    std::filesystem::create_symlink("target", job.folder / "link");
    std::filesystem::create_symlink(job.args[RAW], job.folder / "raw_link");
    for (const char *before : {"", "a longer picture that was here before"}) {
        job.args[RAW] = job.folder / "raw_link";
        job.args[DC] = job.folder / "link";
        if (*before != '\0')
            write_file(job.folder / "target", std::string(10000, *before));
        check_silent(job.run());
        CHECK(job.outputs() == want);
        CHECK(std::filesystem::is_symlink(job.args[DC]));
        CHECK(read_file(job.folder / "target") == want.dc);
    }
    for (const Argument output : {RGB, DC, GAIN}) {
        Job same("", all_stages_ini());
        write_file(same.args[RAW], raw);
        std::filesystem::create_hard_link(same.args[RAW], same.folder / "other name");
        same.args[output] = same.folder / "other name";
        check_silent(same.run());
        CHECK(same.outputs() == want);
        CHECK(read_file(same.args[RAW]) == read_file(same.args[output]));
    }
}
