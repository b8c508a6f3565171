// INI files of any content and length, and registers at the ends of their ranges, through the whole tool.
#include <doctest/doctest.h>

#include <filesystem>
#include <fstream>
#include <random>

#include <sys/resource.h>

#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "tests/trust/job.h"

using namespace cfa;

namespace {

// The value of a register as the log of the last run shows it.
std::string logged(const Job &job, const std::string &key) {
    const std::string log = read_file(job.args[LOG]);
    const std::string start = "cfa.hw." + key + " = ";
    const size_t at = log.find(start);
    if (at == std::string::npos)
        return "(not logged)";
    return log.substr(at + start.size(), log.find('\n', at) - at - start.size());
}

// Runs with these registers and a log that shows them.
void run_with(Job &job, const std::string &ini) {
    write_file(job.args[INI], ini);
    std::filesystem::remove(job.args[LOG]);
    job.args[LEVEL] = "1";
    check_silent(job.run());
}

// A line of exactly this length: head, fill characters, tail.
std::string line(size_t length, const std::string &head, char fill, const std::string &tail) {
    return head + std::string(length - head.size() - tail.size(), fill) + tail + "\n";
}

// Largest resident memory of the tool in kilobytes, with this INI file.
long memory_used(const Job &job) {
    const Outcome outcome = run_child([&] {
        const Outcome inner = job.run();
        rusage usage;
        getrusage(RUSAGE_CHILDREN, &usage);
        std::printf("%d %ld", inner.status, usage.ru_maxrss);
    });
    CHECK(outcome.out.starts_with("0 "));
    return std::atol(outcome.out.c_str() + 2);
}

} // namespace

TEST_CASE("random bytes set nothing; settings before them stay") {
    Job job(mosaic(16, 12, 4095, 1));
    const Pictures defaults = job.expected();
    write_file(job.args[INI], "[cfa]\nreg_cfa_enable = 0\n");
    const Pictures bypassed = job.expected();
    std::mt19937 random(1);
    for (int round = rounds(40); round > 0; round--) {
        std::string bytes(random() % 20000, '\0');
        const uint32_t range = random() % 2 == 0 ? 256 : 96; // all bytes, or text that has line ends
        for (char &byte : bytes)
            byte = static_cast<char>(range == 256 || random() % 40 != 0 ? 32 + random() % range : '\n');
        INFO("round ", round);
        write_file(job.args[INI], bytes);
        write_file(job.args[TOP_INI], bytes);
        check_silent(job.run());
        CHECK(job.outputs() == defaults);
        // The section ends continuation: a random line with a blank in front would be a value for the key
        // above.
        write_file(job.args[INI], "[cfa]\nreg_cfa_enable = 0\n[random]\n" + bytes);
        check_silent(job.run());
        CHECK(job.outputs() == bypassed);
    }
}

TEST_CASE("NULs, UTF-16, byte-order marks, old line ends") {
    using namespace std::string_literals;
    Job job(mosaic(8, 6, 4095, 1));
    const std::string text = "[cfa]\nreg_cfa_gsig_tol = 7\n";
    std::string little = "\xFF\xFE", big = "\xFE\xFF";
    for (const char c : text) {
        little += {c, '\0'};
        big += {'\0', c};
    }
    const std::vector<std::pair<std::string, std::string>> cases = {
        {text, "7"},
        {little, "32"},
        {big, "32"},
        {"\xEF\xBB\xBF" + text, "7"},
        {"[cfa]\r\nreg_cfa_gsig_tol = 7\r\n", "7"},
        {"[cfa]\rreg_cfa_gsig_tol = 7\r", "32"},             // one line to the parser
        {"[cfa]\0 noise\nreg_cfa_gsig_tol = 7\0 8\n"s, "7"}, // a line ends at a NUL
        {"[cfa]\nreg_cfa_gsig_tol\0 = 7\n"s, "32"},
        {"\0[cfa]\nreg_cfa_gsig_tol = 7\n"s, "32"},
        {std::string(100000, '\0') + "\n" + text, "7"},
    };
    for (const auto &[bytes, value] : cases) {
        const std::string start = bytes.substr(0, 60);
        INFO(start);
        run_with(job, bytes);
        CHECK(logged(job, "reg_cfa_gsig_tol") == value);
    }
}

TEST_CASE("lines of 199 to 2,000,001 characters: none is cut, none spills into the next") {
    Job job(mosaic(8, 6, 4095, 1));
    const std::string off = "reg_cfa_enable = 0"; // must stay part of its line
    for (const size_t length : {199u, 200u, 201u, 202u, 398u, 399u, 400u, 1024u, 4097u, 65537u, 2000001u}) {
        INFO(length, " characters");
        run_with(job, "[cfa]\n" + line(length, "; ", '-', off) + line(length, "# ", ' ', off) +
                          line(length, "reg_cfa_gsig_tol = 7 ; ", '=', off) +
                          line(length, "reg_cfa_rbsig_tol", ' ', "= 8") +
                          line(length, "reg_cfa_edge_tol = ", '0', "9") +
                          line(length, "", ' ', "reg_cfa_vw_thd = 10") + // continues the line above
                          line(length, "reg_cfa_sige_thd = 11", ' ', "") +
                          line(length, "reg_cfa_lumatg", 'x', " = 1") +
                          line(length, "reg_cfa_edgee_thd = 12", '\t', off) + "reg_cfa_edgee_thd2 = 13\n" +
                          line(length, "[", 's', "]") + "reg_cfa_gsig_tol = 99\n");
        CHECK(logged(job, "reg_cfa_enable") == "1");
        CHECK(logged(job, "reg_cfa_gsig_tol") == "7");
        CHECK(logged(job, "reg_cfa_rbsig_tol") == "8");
        CHECK(logged(job, "reg_cfa_edge_tol") == "0"); // a second value, which is no number
        CHECK(logged(job, "reg_cfa_vw_thd") == "1500");
        CHECK(logged(job, "reg_cfa_sige_thd") == "11");
        CHECK(logged(job, "reg_cfa_edgee_thd") == "12");
        CHECK(logged(job, "reg_cfa_edgee_thd2") == "13");
    }
}

TEST_CASE("numbers beyond 64 bits become the nearest 64-bit number, cut to the width") {
    Job job(mosaic(8, 6, 4095, 1));
    struct Number {
        std::string text, twelve_bits, signed_thirteen_bits;
    };
    for (const Number &n :
         {Number{"9223372036854775807", "4095", "-1"}, Number{"9223372036854775808", "4095", "-1"},
          Number{"-9223372036854775808", "0", "0"}, Number{"-9223372036854775809", "0", "0"},
          Number{"18446744073709551617", "4095", "-1"}, Number{std::string(1000, '9'), "4095", "-1"},
          Number{"-" + std::string(1000, '9'), "0", "0"},
          Number{std::string(1000, '0') + "4097", "1", "-4095"},
          Number{"9223372036854771713", "1", "-4095"}, // 2^63 - 4095
          Number{"4294967297", "1", "1"}}) {
        INFO(n.text);
        run_with(job,
                 "[cfa]\nreg_cfa_gsig_tol = " + n.text + "\nreg_cfa_cmoire_edge_d0c0 = " + n.text + "\n");
        CHECK(logged(job, "reg_cfa_gsig_tol") == n.twelve_bits);
        CHECK(logged(job, "reg_cfa_cmoire_edge_d0c0") == n.signed_thirteen_bits);
    }
}

TEST_CASE("every register at both ends of its range; one beyond an end is the other end") {
    Job job(mosaic(16, 12, 4095, 1));
    Thin thin(8);
    for (const RegisterInfo &info : cfa_reg_hw_table().registers) {
        if (!thin.take())
            continue;
        INFO(info.key);
        const int64_t span = int64_t{1} << info.bits;
        const int64_t low = info.is_signed ? -span / 2 : 0;
        const int64_t high = low + span - 1;
        const auto pictures = [&](int64_t written, int64_t meant) {
            const std::string others = info.key == std::string("reg_cfa_shpn_enable") ? "" : all_stages_ini();
            run_with(job, "[cfa]\n" + others + info.key + " = " + std::to_string(written) + "\n");
            CHECK(logged(job, info.key) == std::to_string(meant));
            return job.outputs();
        };
        CHECK(pictures(low - 1, high) == pictures(high, high));
        CHECK(pictures(high + 1, low) == pictures(low, low));
    }
}

TEST_CASE("an INI file of 100 MB takes no memory: one comment, one value, settings, NULs") {
    Job job(mosaic(8, 6, 4095, 1));
    const long small = memory_used(job);
    constexpr size_t SIZE = 100 << 20;
    const std::string settings = "reg_cfa_gsig_tol = 7\n";
    for (const std::string &piece : {std::string("=-"), std::string("0"), settings, std::string(1, '\0')}) {
        INFO(piece);
        std::string block = piece;
        while (block.size() < 1 << 20)
            block += block;
        {
            std::ofstream file(job.args[INI], std::ios::binary);
            file << "[cfa]\n" << (piece == "0" ? "reg_cfa_gsig_tol = " : piece == "=-" ? "; " : "");
            for (size_t written = 0; written < SIZE; written += block.size())
                file << block;
            file << (piece == "0" ? "7" : "") << "\nreg_cfa_enable = 0\n";
        }
        job.args[LEVEL] = "1";
        std::filesystem::remove(job.args[LOG]);
        const long used = memory_used(job);
        CHECK(used < small + (SANITIZED ? 30000 : 1500));
        CHECK(logged(job, "reg_cfa_enable") == "0");
        CHECK(logged(job, "reg_cfa_gsig_tol") == (piece == "0" || piece == settings ? "7" : "32"));
        if (SANITIZED)
            break;
    }
}
