// The process around the tool: closed and full descriptors, umask, locale, environment, working folder, and
// what its user may not read or write.
#include <doctest/doctest.h>

#include <cstdlib>
#include <filesystem>

#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/trust/job.h"

namespace {

namespace fs = std::filesystem;

// The log without its time stamps.
std::string log_text(const Job &job) {
    std::string text;
    const std::string log = read_file(job.args[LOG]);
    for (size_t at = 0; at < log.size();) {
        const size_t end = std::min(log.find('\n', at), log.size());
        text += log.substr(std::min(at + 20, end), end - std::min(at + 20, end)) + "\n";
        at = end + 1;
    }
    return text;
}

// From here on the process is nobody's; the superuser may do everything.
void become_nobody() {
    if (getuid() != 0)
        return;
    if (setgroups(0, nullptr) != 0 || setgid(65534) != 0 || setuid(65534) != 0)
        _exit(99);
}

// A job that nobody can reach: tool and files in a folder open to all.
class OpenJob : public Job {
  public:
    OpenJob() : Job(mosaic(8, 6, 4095, 1), all_stages_ini()) {
        fs::permissions(folder.path, fs::perms(0777));
        fs::copy_file(args[0], folder / "tool");
        fs::permissions(folder / "tool", fs::perms(0755));
        args[0] = folder / "tool";
    }
    Outcome run_as_nobody(int timeout_ms = 60000) const { return run(timeout_ms, become_nobody); }
};

} // namespace

TEST_CASE("any of the standard descriptors closed, or full: pictures, log and statuses stay") {
    Job job(mosaic(8, 6, 4095, 1), all_stages_ini());
    const Pictures want = job.expected();
    const std::string log = log_text(job);
    Job broken("");
    Job no_arguments("");
    no_arguments.args.resize(1);
    for (int closed = 0; closed < 8; closed++)
        for (const bool full : {false, true}) {
            INFO("descriptors ", closed, full ? 1 : 0);
            const auto prepare = [=] {
                for (int fd = 0; fd < 3; fd++)
                    if ((closed >> fd & 1) != 0) {
                        close(fd);
                        if (full && open("/dev/full", O_RDWR) != fd)
                            _exit(99);
                    }
            };
            job.remove_outputs();
            fs::remove(job.args[LOG]);
            check_silent(job.run(60000, prepare));
            CHECK(job.outputs() == want);
            CHECK(log_text(job) == log);
            CHECK(broken.run(60000, prepare).status == 1);
            CHECK(log_text(broken).find("No data available") == std::string::npos); // it is for the terminal
            CHECK(no_arguments.run(60000, prepare).status == 255);
        }
}

TEST_CASE("umasks: the mode of new files follows them, their bytes do not") {
    OpenJob job;
    const Pictures want = job.expected();
    fs::remove(job.args[LOG]);
    for (const mode_t mask : {0000, 0022, 0077, 0666, 0777}) {
        INFO(mask);
        job.remove_outputs();
        job.args[LOG] = "/dev/null"; // a log that cannot be opened a second time is another matter
        check_silent(job.run(60000, [mask] {
            umask(mask);
            become_nobody();
        }));
        struct stat status;
        for (const Argument output : {RGB, DC, GAIN}) {
            REQUIRE(stat(job.args[output].c_str(), &status) == 0);
            CHECK((status.st_mode & 07777) == (0666 & ~mask));
            fs::permissions(job.args[output], fs::perms(0644)); // for a test that is not the superuser's
        }
        CHECK(job.outputs() == want);
    }
}

TEST_CASE("locale, time zone, environment and working folder change nothing") {
    Job job(mosaic(8, 6, 4095, 1), all_stages_ini());
    const Pictures want = job.expected();
    const std::string log = log_text(job);
    const auto check = [&](const std::function<void()> &prepare) {
        job.remove_outputs();
        fs::remove(job.args[LOG]);
        check_silent(job.run(60000, prepare));
        CHECK(job.outputs() == want);
        CHECK(log_text(job) == log);
    };
    for (const char *locale : {"", "C.UTF-8", "tr_TR.UTF-8", "ar_SA.UTF-8", "no such locale"})
        check([=] {
            setenv("LC_ALL", locale, 1);
            setenv("LANGUAGE", "de", 1);
        });
    for (const char *zone : {"", ":", ":/dev/zero", "Pacific/Kiritimati", "XYZ-99:99:99", "/no/such/zone"})
        check([=] { setenv("TZ", zone, 1); });
    check([] { clearenv(); });
    check([] { setenv("MALLOC_PERTURB_", "165", 1); });
    const std::string gone = job.folder / "gone";
    check([=] {
        if (mkdir(gone.c_str(), 0700) != 0 || chdir(gone.c_str()) != 0 || rmdir(gone.c_str()) != 0)
            _exit(99);
    });

    Job relative(mosaic(8, 6, 4095, 1), all_stages_ini());
    const std::string here = relative.folder.path;
    for (size_t i = 1; i < relative.args.size(); i++)
        if (relative.args[i].starts_with(here + "/"))
            relative.args[i] = relative.args[i].substr(here.size() + 1);
    check_silent(relative.run(60000, [=] {
        if (chdir(here.c_str()) != 0)
            _exit(99);
    }));
    CHECK(read_file(here + "/rgb") == want.rgb);
    CHECK(read_file(here + "/gain") == want.gain);
}

TEST_CASE(
    "what the user may not open: pictures are waited for, settings keep their defaults, a log is an error") {
    OpenJob job;
    fs::create_directory(job.folder / "read_only");
    fs::permissions(job.folder / "read_only", fs::perms(0555));
    for (const Argument output : {RGB, DC, GAIN}) {
        OpenJob other;
        other.args[output] = job.folder / "read_only/picture";
        check_waits(other, other.args[output], become_nobody);
        other.args[output] = other.folder / "write protected";
        write_file(other.args[output], "before");
        fs::permissions(other.args[output], fs::perms(0444));
        check_waits(other, other.args[output], become_nobody);
        CHECK(read_file(other.args[output]) == "before");
    }
    OpenJob debug;
    debug.args[DEBUG] = "1";
    debug.args[DEBUG_FOLDER] = job.folder / "read_only";
    check_waits(debug, job.folder / "read_only/dbg_img_AvgRGB.ppm", become_nobody);

    OpenJob log;
    log.args[LOG] = job.folder / "read_only/log";
    check_error(log.run_as_nobody(), "Unable to open log file '" + log.args[LOG] + "'");

    OpenJob settings;
    fs::permissions(settings.args[INI], fs::perms(0000));
    settings.args[LEVEL] = "1";
    check_silent(settings.run_as_nobody());
    const std::string text = read_file(settings.args[LOG]);
    CHECK(text.find(": Can't handle cfa_reg.\n") != std::string::npos);
    CHECK(text.find("cfa.hw.reg_cfa_shpn_enable = 0\n") != std::string::npos);
    CHECK(text.find("cfa.hw.reg_cfa_enable is not set") == std::string::npos);

    OpenJob input;
    fs::permissions(input.args[RAW], fs::perms(0000));
    check_waits(input, input.args[RAW], become_nobody);
}
