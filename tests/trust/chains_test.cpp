// Tools at work on the same files at the same time: no picture is read or left short or mixed.
#include <doctest/doctest.h>

#include <algorithm>
#include <list>
#include <random>

#include <unistd.h>

#include "tests/support/tool.h"

namespace {

bool one_of(const std::string &bytes, const std::string (&known)[2]) {
    return bytes == known[0] || bytes == known[1];
}

} // namespace

TEST_CASE("a chain of three, on the DC image and on the gain map, and a rival, in any order of start") {
    // What the three make of either of two pictures of different sizes.
    std::string raw[2] = {mosaic(256, 192, 1), mosaic(196, 172, 2)}, link[2][2], first[2], second[2],
                third[2];
    for (const int which : {0, 1}) {
        const Pictures a = Job(raw[which], ALL_STAGES).expected(), b = Job(a.dc, ALL_STAGES).expected();
        first[which] = a.rgb;
        link[0][which] = a.dc;
        second[which] = b.rgb;
        link[1][which] = b.gain;
        third[which] = Job(b.gain, ALL_STAGES).expected().rgb;
    }
    CHECK(third[0] != third[1]);
    Job one("", ALL_STAGES), two("", ALL_STAGES), three("", ALL_STAGES), rival("", ALL_STAGES);
    two.args[RAW] = rival.args[DC] = one.args[DC];
    three.args[RAW] = two.args[GAIN];
    rival.args[RGB] = one.args[RGB];
    std::mt19937 random(1);
    for (int round = rounds(30); round > 0; --round) {
        const size_t which = random() % 2;
        const bool disturbed = round % 2 == 0; // old files are there, and a rival writes the same ones
        INFO("round ", round, ", picture ", which, ", disturbed ", disturbed);
        write_file(one.args[RAW], raw[which]);
        write_file(rival.args[RAW], raw[1 - which]);
        std::vector<const Job *> jobs = {&one, &two, &three, &rival};
        if (!disturbed) {
            jobs.pop_back();
            for (const Job *job : jobs)
                job->clear();
        }
        std::shuffle(jobs.begin(), jobs.end(), random);
        std::list<Process> running;
        for (const Job *job : jobs) {
            running.emplace_back([job] { job->become_tool(); });
            usleep(random() % 3 == 0 ? 0 : static_cast<useconds_t>(random() % 8000));
        }
        for (Process &process : running) {
            const Outcome outcome = process.wait();
            CHECK(outcome.status == 0);
            CHECK(outcome.err == "");
            CHECK(matches(outcome.out, "(wait pre frame ready (.*)\n.* ready\n)?"));
        }
        CHECK(one_of(one.outputs().rgb, first));
        CHECK(one_of(one.outputs().dc, link[0]));
        CHECK(one_of(two.outputs().rgb, second));
        CHECK(one_of(two.outputs().gain, link[1]));
        CHECK(one_of(three.outputs().rgb, third));
        CHECK((disturbed || three.outputs().rgb == third[which]));
    }
}
