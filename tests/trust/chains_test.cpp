// Tools at work on the same files at the same time: a consumer never sees a short or mixed picture.
#include <doctest/doctest.h>

#include <algorithm>
#include <filesystem>
#include <random>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/trust/job.h"

namespace {

constexpr int WIDTH = 256, HEIGHT = 192;

// A job at work; what it says goes to the file words of its folder.
class Running {
  public:
    explicit Running(const Job &job) : job_(job), pid_(fork()) {
        if (pid_ != 0)
            return;
        std::vector<char *> argv;
        for (const std::string &arg : job.args)
            argv.push_back(const_cast<char *>(arg.c_str()));
        argv.push_back(nullptr);
        const int words = open((job.folder / "words").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(words, STDOUT_FILENO);
        dup2(words, STDERR_FILENO);
        alarm(60);
        execv(argv[0], argv.data());
        _exit(127);
    }

    bool ended() { return ended_ || (ended_ = waitpid(pid_, &status_, WNOHANG) == pid_); }

    // Waits for the end and checks it. The input may have been waited for; nothing else is worth a word.
    void finish() {
        if (!ended_)
            waitpid(pid_, &status_, 0);
        ended_ = true;
        CHECK(status_ == 0);
        const std::string words = read_file(job_.folder / "words");
        const std::string waited =
            "wait pre frame ready " + job_.args[RAW] + "\n" + job_.args[RAW] + " ready\n";
        CHECK((words == "" || words == waited));
    }

  private:
    const Job &job_;
    pid_t pid_;
    int status_ = -1;
    bool ended_ = false;
};

void pause_at_random(std::mt19937 &random) {
    usleep(random() % 3 == 0 ? 0 : static_cast<useconds_t>(random() % 8000));
}

// Starts all jobs in random order and at random distances, and waits for their end.
void run_together(std::vector<const Job *> jobs, std::mt19937 &random) {
    std::shuffle(jobs.begin(), jobs.end(), random);
    std::vector<Running> running;
    for (const Job *job : jobs) {
        running.emplace_back(*job);
        pause_at_random(random);
    }
    for (Running &one : running)
        one.finish();
}

// Two pictures, of different sizes, and what one and two runs make of them.
struct Known {
    explicit Known(Argument link) {
        Job first(mosaic(WIDTH, HEIGHT, 4095, 1), all_stages_ini());
        Job second(mosaic(WIDTH - 60, HEIGHT - 20, 4095, 2), all_stages_ini());
        for (Job *job : {&first, &second}) {
            raw.push_back(read_file(job->args[RAW]));
            made.push_back(job->expected());
            linked.push_back(link == DC ? made.back().dc : made.back().gain);
            consumed.push_back(Job(linked.back(), all_stages_ini()).expected());
        }
        CHECK(consumed[0] != consumed[1]);
    }
    std::vector<std::string> raw, linked;
    std::vector<Pictures> made, consumed;
};

} // namespace

TEST_CASE("producer and consumer on one file, in any order of start") {
    for (const Argument link : {DC, GAIN}) {
        const Known known(link);
        Job producer("", all_stages_ini()), consumer("", all_stages_ini());
        producer.args[link] = consumer.args[RAW] = producer.folder / "shared";
        std::mt19937 random(1);
        for (int round = rounds(20); round > 0; round--) {
            const size_t which = random() % 2;
            INFO("round ", round, ", picture ", which);
            write_file(producer.args[RAW], known.raw[which]);
            std::filesystem::remove(producer.args[link]);
            consumer.remove_outputs();
            run_together({&producer, &consumer}, random);
            CHECK(producer.outputs() == known.made[which]);
            CHECK(consumer.outputs() == known.consumed[which]);
        }
    }
}

TEST_CASE("a consumer beside a producer that overwrites: the old picture or the new one, never a mixture") {
    const Known known(DC);
    Job producer("", all_stages_ini()), consumer("", all_stages_ini());
    producer.args[DC] = consumer.args[RAW] = producer.folder / "shared";
    write_file(producer.args[DC], known.linked[0]);
    std::mt19937 random(2);
    int old_ones = 0, new_ones = 0;
    for (int round = 0; round < rounds(20); round++) {
        const size_t which = 1 - static_cast<size_t>(round % 2);
        INFO("round ", round, ", picture ", which);
        write_file(producer.args[RAW], known.raw[which]);
        consumer.remove_outputs();
        run_together({&producer, &consumer}, random);
        CHECK(producer.outputs() == known.made[which]);
        const Pictures got = consumer.outputs();
        old_ones += got == known.consumed[1 - which];
        new_ones += got == known.consumed[which];
        CHECK(old_ones + new_ones == round + 1);
    }
    MESSAGE(old_ones, " old pictures, ", new_ones, " new ones");
}

TEST_CASE("a chain of three, started in any order") {
    const Known known(DC);
    const Pictures last[] = {Job(known.consumed[0].dc, all_stages_ini()).expected(),
                             Job(known.consumed[1].dc, all_stages_ini()).expected()};
    Job first("", all_stages_ini()), second("", all_stages_ini()), third("", all_stages_ini());
    second.args[RAW] = first.args[DC];
    third.args[RAW] = second.args[DC];
    std::mt19937 random(3);
    for (int round = rounds(10); round > 0; round--) {
        const size_t which = random() % 2;
        INFO("round ", round, ", picture ", which);
        write_file(first.args[RAW], known.raw[which]);
        for (const Job *job : {&first, &second, &third})
            job->remove_outputs();
        run_together({&first, &second, &third}, random);
        CHECK(third.outputs() == last[which]);
    }
}

TEST_CASE("two writers on the same files: each file is whole, of one or the other") {
    const Known known(DC);
    Job one(known.raw[0], all_stages_ini()), other(known.raw[1], all_stages_ini());
    Job consumer("", all_stages_ini());
    for (const Argument output : {RGB, DC, GAIN})
        other.args[output] = one.args[output];
    consumer.args[RAW] = one.args[DC];
    std::mt19937 random(4);
    for (int round = rounds(20); round > 0; round--) {
        INFO("round ", round);
        if (random() % 2 == 0)
            one.remove_outputs();
        run_together({&one, &other, &consumer}, random);
        const Pictures got = one.outputs();
        CHECK((got.rgb == known.made[0].rgb || got.rgb == known.made[1].rgb));
        CHECK((got.dc == known.made[0].dc || got.dc == known.made[1].dc));
        CHECK((got.gain == known.made[0].gain || got.gain == known.made[1].gain));
        const Pictures seen = consumer.outputs();
        CHECK((seen == known.consumed[0] || seen == known.consumed[1]));
    }
}

TEST_CASE("a reader that holds the lock sees the whole file until it lets go") {
    const Known known(DC);
    Job writer(known.raw[1], all_stages_ini());
    std::mt19937 random(5);
    for (int round = rounds(5); round > 0; round--) {
        for (const Argument output : {RGB, DC, GAIN}) {
            write_file(writer.args[output], "what was here before");
            const int fd = open(writer.args[output].c_str(), O_RDONLY | O_CLOEXEC);
            REQUIRE(flock(fd, LOCK_EX) == 0);
            Running running(writer);
            for (int look = 0; look < 20; look++) {
                usleep(static_cast<useconds_t>(random() % 2000));
                CHECK(read_file(writer.args[output]) == "what was here before");
            }
            CHECK_FALSE(running.ended());
            close(fd);
            running.finish();
            CHECK(writer.outputs() == known.made[1]);
        }
    }
}
