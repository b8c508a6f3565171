// Where pictures and settings may lie, and what surrounds the process: names, links, FIFOs, descriptors,
// environment.
#include <doctest/doctest.h>

#include <algorithm>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/tool.h"

namespace {

namespace fs = std::filesystem;

const std::string raw = mosaic(8, 6);

// A path of this length in the folder.
std::string path_of_length(std::string folder, size_t length, char last) {
    while (folder.size() + 200 < length)
        folder += "/" + std::string(99, 'd');
    fs::create_directories(folder);
    return folder + "/" + std::string(length - folder.size() - 1, last);
}

std::string make_fifo(const Job &job, const std::string &name) {
    REQUIRE(mkfifo((job.folder / name).c_str(), 0600) == 0);
    return job.folder / name;
}

} // namespace

TEST_CASE("names of any characters and lengths; what messages show of them; the wait for what is not there") {
    const Pictures want = Job(raw, ALL_STAGES).expected();
    for (const std::string name : {"a b", "a\nb", "%s%n%d%%", "'\"\\$(x)`;&", "-", "\xFF\xC3(", "\x1B[2J",
                                   "255", "1023", "1024", "4095"}) {
        INFO(name);
        Job job("");
        const size_t length = static_cast<size_t>(std::atoi(name.c_str()));
        fs::create_directory(job.folder / name);
        for (const Argument file : {INI, LOG, TOP_INI, RAW, RGB, DC, GAIN}) {
            const char letter = static_cast<char>('a' + file);
            job.args[file] = length == 0    ? job.folder / name + "/" + letter + name
                             : length < 300 ? job.folder / std::string(length, letter)
                                            : path_of_length(job.folder.path, length, letter);
        }
        write_file(job.args[RAW], raw);
        write_file(job.args[INI], ALL_STAGES);
        job.args[DEBUG_FOLDER] = job.folder / name;
        job.args[DEBUG] = "1";
        CHECK(job.run() == SILENT);
        CHECK(job.outputs() == want);
        CHECK(fs::file_size(job.args[DEBUG_FOLDER] + "/dbg_img_AvgRGB.ppm") > 8 * 6 * 3);
        CHECK(job.log().size() > 200);
        write_file(job.args[RAW], "P5\n4 3\n-1\n");
        CHECK(job.run() == error_line("Invalid max_rgb (error loading '" + job.args[RAW] + "')"));
        fs::remove(job.args[RAW]);
        check_waits(job, job.args[RAW]);
    }
    Job job(raw);
    for (const Argument output : OUTPUTS) {
        job.args[output] = std::string(5000, 'x');
        check_waits(job, job.args[output]);
        job.args[output] = "/dev/null"; // may be named twice
    }
    job.args[LOG] = job.folder / "none/log";
    CHECK(job.run() == error_line("Unable to open log file '" + job.args[LOG] + "'"));
}

TEST_CASE(
    "FIFOs carry the bytes of files, in any pieces; two runs may share one, and its reader may go away") {
    const std::string large = mosaic(300, 200); // more than a FIFO holds at once
    const Pictures want = Job(large, ALL_STAGES).expected();
    Job piped(""), job(large, ALL_STAGES), consumer("", ALL_STAGES);
    for (const Argument argument : {INI, RAW, RGB, DC, GAIN})
        piped.args[argument] = make_fifo(piped, "fifo" + std::to_string(argument));
    Process run([&] { piped.become_tool(); });
    write_file(piped.args[INI], ALL_STAGES);
    const int fd = open(piped.args[RAW].c_str(), O_WRONLY);
    for (size_t at = 0; at < large.size(); at += 999)
        CHECK(write(fd, &large[at], std::min<size_t>(999, large.size() - at)) > 0);
    close(fd);
    CHECK((piped.outputs() == want));
    CHECK(run.wait() == SILENT);

    job.args[DC] = consumer.args[RAW] = make_fifo(job, "fifo"); // with a lock each would wait for the other
    Process producer([&] { job.become_tool(); });
    CHECK(consumer.run() == SILENT);
    CHECK(producer.wait() == SILENT);
    CHECK((consumer.outputs() == Job(want.dc, ALL_STAGES).expected()));

    Process broken([&] { job.become_tool(); });
    const int reader = open(job.args[DC].c_str(), O_RDONLY);
    char byte;
    CHECK(read(reader, &byte, 1) == 1);
    close(reader);
    CHECK(broken.wait() == error_line("Unable to write file '" + job.args[DC] + "': Broken pipe"));
}

TEST_CASE("links stay links, those to nothing and those to a file") {
    Job job(raw, ALL_STAGES);
    const Pictures want = job.expected();
    for (const Argument output : OUTPUTS) {
        fs::create_symlink("target" + std::to_string(output), job.folder / "link" + std::to_string(output));
        job.args[output] = job.folder / "link" + std::to_string(output);
    }
    for (int round = 0; round < 2; ++round) {
        CHECK(job.run() == SILENT);
        CHECK(job.outputs() == want);
        CHECK(std::all_of(std::begin(OUTPUTS), std::end(OUTPUTS),
                          [&](Argument a) { return fs::is_symlink(job.args[a]); }));
    }
}

TEST_CASE("descriptors closed or full, environment, working folder: pictures and log stay") {
    Job job(raw.substr(0, raw.size() - 1), ALL_STAGES); // there is something to be said on standard error
    CHECK(job.run().err.ends_with(" 1 samples are missing\n"));
    const Pictures want = job.outputs();
    const auto log = job.log();
    const auto check = [&](const std::function<void()> &surrounding) {
        job.clear();
        CHECK(job.run(surrounding).status == 0);
        CHECK(job.outputs() == want);
        CHECK(job.log() == log);
    };
    for (int closed = 1; closed < 8; ++closed)
        for (const bool full : {false, true})
            for (const bool built : {false, true}) {
                job.built = built;
                check([=] {
                    for (int fd = 0; fd < 3; ++fd)
                        if ((closed >> fd & 1) != 0 &&
                            (close(fd) != 0 || (full && open("/dev/full", O_RDWR) != fd)))
                            _exit(99);
                });
            }
    check([] {
        setenv("LC_ALL", "tr_TR.UTF-8", 1), setenv("LANGUAGE", "de", 1), setenv("TZ", ":/dev/zero", 1);
    });
    check([] { clearenv(); });
    for (const Argument file : {INI, LOG, RAW, RGB, DC, GAIN}) // below the working folder
        job.args[file] = fs::path(job.args[file]).filename();
    const fs::path here = fs::current_path();
    fs::current_path(job.folder.path);
    check({});
    fs::current_path(here);
}

TEST_CASE("debug images in one place with another or an output, in FIFOs, behind links to nothing: as if one "
          "after another; the order in which they are waited for") {
    Job job(raw, ALL_STAGES);
    job.args[DEBUG] = "1";
    CHECK(job.run() == SILENT);
    const auto want = job.pictures();
    const auto image = [&](const std::string &name) {
        return job.args[DEBUG_FOLDER] + "/dbg_img_" + name + ".ppm";
    };
    const std::string one = image("GH"), later = image("LV");
    for (const std::string &to : {one, job.folder / "new"}) {
        job.clear();
        fs::remove(later);
        fs::create_symlink(to, later);
        CHECK(job.run() == SILENT);
        CHECK((read_file(to) == want.at(later)));
    }
    job.clear();
    fs::remove(later);
    const std::string rgb = job.args[RGB];
    job.args[RGB] = one;
    CHECK(job.run() == SILENT);
    CHECK((read_file(one) == want.at(rgb)));
    job.clear();
    Process piped([&] {
        make_fifo(job, "dbg/dbg_img_LH.ppm"), make_fifo(job, "dbg/dbg_img_LV.ppm");
        job.become_tool();
    });
    while (!fs::exists(later))
        usleep(1000);
    CHECK((read_file(image("LH")) == want.at(image("LH"))));
    CHECK((read_file(later) == want.at(later)));
    CHECK(piped.wait() == SILENT);
    fs::remove(image("LH")), fs::remove(later);

    for (const auto &[first, second] : {std::pair{"SigV", "AHDiff"}, {"afc_PD_WT", "afc_CDIST_WT"}}) {
        job.clear();
        fs::create_directory(image(first)), fs::create_directory(image(second));
        check_waits(job, image(first));
        fs::remove(image(first)), fs::remove(image(second));
    }
    job.args[RGB] = rgb;
    const std::string cut = path_of_length(job.folder.path, 1020, 'c'); // all names are cut to "db"
    fs::create_directory(cut);
    job.args[DEBUG_FOLDER] = cut;
    CHECK(job.run() == SILENT);
    CHECK((read_file(cut + "/db") == want.at(job.folder / "dbg/dbg_sg_delta_core_4x_8b.ppm")));
}
