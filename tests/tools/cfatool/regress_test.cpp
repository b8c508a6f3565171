#include <filesystem>

#include "tests/tools/cfatool/room.h"
#include "tools/cfatool/regress/minimise.h"

using namespace cfatool;
namespace fs = std::filesystem;

namespace {

/// Pictures, registers and a tool that a test can break.
struct Bench : Room {
    Bench() {
        put("d/a.ppm", picture("P5\n6 4\n4095", Samples(24, 700)));
        put("d/e/b.ppm", picture("P5\n5 3\n255", Samples(15, 90)));
        put("deep.ppm", picture("P5\n5 3\n1048575", Samples(15, 90000)));
        put("on.ini", "[cfa]\nreg_cfa_vw_thd = 7\n[cmodel_top]\nreg_img_bayerid = 2\n");
    }
    void tool(const std::string &script) const {
        put("tool", "#!/bin/sh\n'" + tool_path() + "' \"$@\"\n" + script + "\n");
        fs::permissions(*this / "tool", fs::perms::owner_all);
    }
    /// The last line that a run prints, up to its time.
    std::string last(const std::string &words, const std::string &before = "") const {
        const std::string out = run("regress " + words, before).out;
        const size_t line = out.rfind('\n', out.size() - 2) + 1;
        return out.substr(line, out.rfind("; ") - line);
    }
};

} // namespace

TEST_CASE_FIXTURE(Bench, "plans: lines and names; what is wrong with a plan") {
    check({{"regress plan --pictures d --pictures deep.ppm --registers '*.ini' --set reg_cfa_vw_thd=1,2 "
            "--set reg_cfa_enable=1 --bayer 0,3 -o d/x.tsv",
            0, "12 cases\n"},
           {"regress plan --pictures 'd/*.ppm' --random 18 --seed 4294967278 -o q.tsv", 2,
            "q.tsv:1: nothing tells the pattern id"},
           {"regress plan --random 19 --seed 4294967278 -o q.tsv", 2, "seeds end at"},
           {"regress plan -o q.tsv", 2, "--pictures or --random"},
           {"regress plan --pictures none -o q.tsv", 2, "none: there is no such file"},
           {"regress plan --pictures d --pictures 'd/*' --bayer 1 -o q.tsv", 2,
            "q.tsv: two cases are called a"},
           {"regress plan --random 17 --seed 4294966500 -o d.tsv", 0, "17 cases\n"}});
    CHECK(get("d/x.tsv").starts_with(
        "a/on/vw_thd=1/enable=1/id0\ta.ppm\t../on.ini\t0\treg_cfa_vw_thd=1 reg_cfa_enable=1\n"));
    CHECK(contains(
        get("d/x.tsv"),
        "\ne/b/on/vw_thd=2/enable=1/id3\te/b.ppm\t../on.ini\t3\treg_cfa_vw_thd=2 reg_cfa_enable=1\n"));
    for (const char *line : {"random/4294966500\tlarge:4294966500\trandom:4294966500\t-\n",
                             "\nrandom/4294966511\tlimits:4294966511\tlimits:4294966511\t-\n"})
        CHECK(contains(get("d.tsv"), line));
    CHECK(list() == "d\nd.tsv\ndeep.ppm\non.ini\n");
    for (const auto &[line, message] : {std::pair{"a\tb\tc", "not four or five fields"},
                                        {"a/../b\tx\ty\t0", "'a/../b' is no relative path"},
                                        {"/a\tx\ty\t0", "'/a' is no relative path"},
                                        {"\xFF\tx\ty\t0", "the name of the case is no UTF-8"},
                                        {"a\tx\ty\t16", "'16' is no pattern id"},
                                        {"a\tx\ty\t", "'' is no pattern id"},
                                        {"a\tx\t-\t-", "nothing tells"}}) {
        put("bad.tsv", "# a comment\n\n" + std::string(line) + "\n");
        check({{"regress merge bad.tsv .", 2, "bad.tsv:3: " + std::string(message)}});
    }
}

TEST_CASE_FIXTURE(
    Bench,
    "sums of this program's own block are those of the tool's files, on every way that a picture takes") {
    put("plan.tsv", "a\td/a.ppm\ton.ini\t-\nb\td/e/b.ppm\t-\t1\treg_cfa_shpn_enable=1 "
                    "reg_cfa_shpn_gain_value=40\noff\td/a.ppm\t-\t0\treg_cfa_enable=0\n"
                    "deep\tdeep.ppm\t-\t3\npattern\td/a.ppm\t-\t9\nsteep\td/"
                    "a.ppm\trandom:7\t-\nlimits\tlimits:15\tlimits:15\t-\nbit\trandom:526\t-"
                    "\t0\nwide\trandom:3\trandom:9\t2\n");
    CHECK(last("run plan.tsv -o r --record sums") ==
          "9 cases: 9 pass, 0 fail, 0 error, 0 not run; 0 known from before");
    tool("");
    CHECK(last("run plan.tsv -o r --sums sums --tool ./tool --jobs 3") ==
          "9 cases: 9 pass, 0 fail, 0 error, 0 not run; 0 known from before");
    CHECK(last("run plan.tsv -o r --against ./tool --tool './tool {ini} {log} 5 {debug} {dbg} {top} {raw} "
               "{rgb} {dc} {gain}'") == "9 cases: 9 pass, 0 fail, 0 error, 0 not run; 0 known from before");
    put("cut.ppm", "P5\n5 3\n4095\nabc"), put("cut.tsv", "c\tcut.ppm\t-\t0\n");
    CHECK(last("run cut.tsv -o c --against model --tool ./tool").starts_with("1 cases: 1 pass"));
    std::string sums = get("sums");
    CHECK(sums.size() == 9 * 99 + std::string("a\nb\noff\ndeep\npattern\nsteep\nlimits\nbit\nwide\n").size());
    CHECK(run("run d/a.ppm -r on.ini -o a").status == 0);
    CHECK(read_sum(sums.substr(0, 32)) == sum_of_text(get("a/out.ppm"))); // header and all
    sums[70] = sums[70] == '0' ? '1' : '0';
    put("sums", sums.substr(0, sums.rfind('\n', sums.size() - 2) + 1)); // the gain of a, and one less
    CHECK(last("run plan.tsv -o r --sums sums") ==
          "9 cases: 7 pass, 1 fail, 1 error, 0 not run; 0 known from before");
    CHECK(contains(run("regress merge plan.tsv r").out,
                   "fail, out_sg.ppm: 1 case\n    a (kept/a)\nerror: 1 case\n    wide: no sums are recorded "
                   "(kept/wide)\n9 cases: 7 pass"));
    CHECK(read_sum("99aa06d3014798d86001c324468d497f") ==
          sum_of_text("")); // as published for XXH3 of 128 bits
}

TEST_CASE_FIXTURE(Bench,
                  "a run goes on where one has stopped; what has changed is run again, and nothing else") {
    tool("");
    put("plan.tsv", "a\td/a.ppm\ton.ini\t-\nb\td/e/b.ppm\t-\t0\n");
    const std::string run = "run plan.tsv -o r --against model --tool ./tool",
                      all = "2 cases: 2 pass, 0 fail, 0 error, 0 not run; ";
    struct {
        std::function<void()> change;
        const char *known;
    } const rows[] = {{[] {}, "0"},
                      {[] {}, "2"},
                      {[&] { put("on.ini", "# another comment\n" + get("on.ini")); }, "2"},
                      {[&] { put("on.ini", get("on.ini") + "[cfa]\nreg_cfa_vw_thd = 8\n"); }, "1"},
                      {[&] { put("d/a.ppm", picture("P5\n6 4\n4095", Samples(24, 701))); }, "1"},
                      {[&] { put("plan.tsv", "b\td/e/b.ppm\t-\t0\na\td/a.ppm\ton.ini\t1\n"); }, "1"},
                      {[&] { tool("exit 0"); }, "0"}};
    for (const auto &row : rows) {
        row.change();
        CHECK(last(run) == all + row.known + " known from before");
    }
    CHECK(last("run plan.tsv -o r --tool ./tool --record s") == all + "0 known from before");
    // A line that was cut off, and one of another plan.
    for (const auto &file : fs::directory_iterator(*this / "r"))
        put("cut/" + file.path().filename().string(), "{\"case\":\"c\",\"result\":\"pass\",\"key\":\"" +
                                                          std::string(32, '0') + "\",\"at\":1,\"ms\":1.0}\n" +
                                                          read_file(file.path()).substr(0, 90));
    CHECK(last("run plan.tsv -o cut --tool ./tool --record s") == all + "0 known from before");
    CHECK(contains(this->run("regress merge plan.tsv cut").out,
                   " results of cases that are not in the plan\n2 cases: 2 pass"));
    // The newest result of a case counts, wherever it stands.
    std::string lines;
    for (const auto &[start, at] : {std::pair{"a\",\"result\":\"error", 1},
                                    {"a\",\"result\":\"pass", 2},
                                    {"b\",\"result\":\"error", 2},
                                    {"b\",\"result\":\"pass", 1}})
        lines += "{\"case\":\"" + std::string(start) + "\",\"key\":\"" + std::string(32, '0') +
                 "\",\"at\":" + std::to_string(at) + ",\"ms\":1.0}\n";
    put("newest/x.jsonl", lines);
    check({{"regress merge plan.tsv newest", 1,
            "error: 1 case\n    b\n2 cases: 1 pass, 0 fail, 1 error, 0 not run\n"}});
}

TEST_CASE_FIXTURE(Bench, "a case that fails, crashes or takes too long touches no other; it is kept, ready "
                         "to run, and made small") {
    tool("case $(cat \"$1\") in\n*vw_thd\\ =\\ 1*) kill -9 $$ ;;\n*vw_thd\\ =\\ 2*) sleep 60 & sleep 50 "
         ";;\n*vw_thd\\ =\\ 3*) echo no; exit 3 ;;\n"
         "*vw_thd\\ =\\ 4*) rm \"$9\" ;;\n*vw_thd\\ =\\ 5*) printf '\\017' | dd of=\"$8\" bs=1 seek=50 "
         "conv=notrunc 2>/dev/null ;;\n*vw_thd\\ =\\ 6*) date +%N >>\"$8\" ;;\n"
         "*vw_thd\\ =\\ 7*) [ $(wc -c <\"$7\") -gt 600 ] && kill -6 $$; exit 5 ;;\n*vw_thd\\ =\\ 8*) rm odd "
         "2>/dev/null || { touch odd; printf '\\017' | dd of=\"$8\" bs=1 seek=50 conv=notrunc 2>/dev/null; } "
         ";; esac");
    put("wide.ppm", picture("P5\n40 30\n4095", Samples(1200, 700)));
    std::string plan;
    for (int i = 0; i < 20; ++i)
        plan += "c" + std::to_string(i) + (i == 2 ? "\td/a.ppm" : "\twide.ppm") +
                std::string("\t-\t0\treg_cfa_ymoire_np=9 reg_cfa_vw_thd=") +
                std::to_string(i < 9 ? i : 900 + i) + "\n";
    put("plan.tsv", plan);
    const std::string words =
        "run plan.tsv -o r --against model --tool ./tool --limit 0.7 --jobs 2 --minimise";
    CHECK(last(words) == "20 cases: 12 pass, 2 fail, 6 error, 0 not run; 0 known from before");
    const std::string merged = run("regress merge plan.tsv r --page r/page.html --junit junit.xml").out;
    for (const char *part : {"c1: ended by signal 9 (kept/c1)\n", "c2: takes longer than 0.7 s (kept/c2)\n",
                             "c3: ended with status 3: no (kept/c3)\n", "c4: out_dc.ppm: No such file",
                             "c6: out.ppm: bytes follow", "c5: out.ppm: 1 of 3600 samples differ",
                             "c7: ended by signal 6 (kept/c7)\n",
                             "fail, out.ppm, not repeatable: 1 case\n    c8 (kept/c8)\n", "error: 6 cases\n"})
        CHECK_MESSAGE(contains(merged, part), part, merged);
    CHECK(matches_in(get("junit.xml"), "(tests=\"20\" failures=\"2\" errors=\"6\" skipped=\"0\")").size() ==
          1);
    CHECK(matches_in(get("junit.xml"), "(<(?:failure|error) )").size() == 2);
    CHECK(run_program({*this / "r/kept/c5/again"}).status == 0);
    CHECK(run_program({*this / "r/kept/c3/again"}).status == 3);
    CHECK(get("r/kept/c5/out.ppm") == get("r/kept/c5/got/out.ppm"));
    CHECK(get("r/kept/c5/got/out.ppm") != get("r/kept/c5/want/out.ppm"));
    CHECK(get("r/kept/c5/least/cfa.ini") == "[cfa]\nreg_cfa_vw_thd = 5\n"); // without the other register
    CHECK(contains(get("r/kept/c5/least/raw.ppm"), "\n4 4\n")); // the least whose byte 50 is a sample
    for (const std::string id : {"1", "2", "3"}) {              // what ends and what takes too long
        CHECK(get("r/kept/c" + id + "/least/cfa.ini") == "[cfa]\nreg_cfa_vw_thd = " + id + "\n");
        CHECK(contains(get("r/kept/c" + id + "/least/raw.ppm"), "\n4 4\n"));
    }
    const size_t size = get("r/kept/c7/least/raw.ppm").size();
    CHECK((600 < size && size < 640)); // a smaller one ends otherwise
    CHECK_FALSE(fs::exists(*this / "r/kept/c8/least"));
    CHECK(contains(get("r/page.html"), "\"kept/c5/page/index.html\""));
    for (const std::string &link : matches_in(get("r/page.html"), "href=\"([^\"]*)\""))
        CHECK_MESSAGE(fs::exists(*this / ("r/" + link)), link);
    CHECK(last(words + " --keep 0") ==
          "20 cases: 12 pass, 2 fail, 6 error, 0 not run; 14 known from before"); // errors run again
    put("one.tsv", "c5\twide.ppm\t-\t0\treg_cfa_vw_thd=5\n");
    const std::string one = "run one.tsv --against model --tool ./tool --keep 0 -o ";
    for (const auto &[folder, text] :
         {std::pair{"yes", "\n    c5: out.ppm: 1 of 3600 samples differ"},
          {"no --look 0", "fail, out.ppm, stage not looked for: 1 case\n    c5\n"}}) {
        last(one + folder);
        check({{"regress merge one.tsv " + std::string(folder).substr(0, 3), 1, text}});
    }
}

TEST_CASE_FIXTURE(Bench, "parts of a plan, of a Slurm array too, are each case once; the sum of all states "
                         "is the plan, at any moment") {
    put("plan.tsv",
        "a\td/a.ppm\t-\t0\nb\td/a.ppm\t-\t1\nc\td/a.ppm\t-\t2\nd\td/a.ppm\t-\t3\ne\td/a.ppm\t-\t0\n");
    const std::string run = "run plan.tsv -o r --against model ";
    CHECK(last(run + "--shard 2/3") == "2 cases: 2 pass, 0 fail, 0 error, 0 not run; 0 known from before");
    check({{"regress merge plan.tsv r --junit j", 1, "5 cases: 2 pass, 0 fail, 0 error, 3 not run\n"}});
    CHECK(contains(get("j"), "skipped=\"3\""));
    const auto element = [](int id, int count) {
        return "SLURM_ARRAY_TASK_ID=" + std::to_string(id) +
               " SLURM_ARRAY_TASK_MIN=4 SLURM_ARRAY_TASK_MAX=6 SLURM_ARRAY_TASK_COUNT=" +
               std::to_string(count);
    };
    CHECK(last(run, element(4, 3)) == "2 cases: 2 pass, 0 fail, 0 error, 0 not run; 0 known from before");
    CHECK(last(run, element(5, 3)) == "2 cases: 2 pass, 0 fail, 0 error, 0 not run; 2 known from before");
    CHECK(contains(this->run("regress " + run, element(4, 2)).err, "not all of a range"));
    CHECK(last(run, element(6, 3)) == "1 cases: 1 pass, 0 fail, 0 error, 0 not run; 0 known from before");
    check({{"regress merge plan.tsv r", 0, "5 cases: 5 pass, 0 fail, 0 error, 0 not run\n"},
           {"regress " + run + "--shard 4/3", 2, "there is no part 4/3"},
           {"regress run plan.tsv -o r --sums a --expect b", 2, "only one of"},
           {"regress run plan.tsv -o r --record s --shard 1/2", 2, "merge --record"}});
    const std::string once =
        "'[ -e ran ] || { touch ran; exec \"" + tool_path() +
        "\" {ini} {log} 5 0 . {top} {raw} {rgb} {dc} {gain}; }'"; // nothing is left of the case before
    CHECK(last("run plan.tsv -o o --jobs 1 --against model --tool " + once) ==
          "5 cases: 1 pass, 0 fail, 4 error, 0 not run; 0 known from before");
    for (const char *id : {"a", "b", "c", "d", "e"}) // folders of outputs; another comment is no difference
        for (const char *file : {"out.ppm", "out_dc.ppm", "out_sg.ppm"})
            put("want/" + std::string(id) + "/" + file,
                picture(file == std::string("out.ppm") ? "P6\n# by hand\n6 4\n4095" : "P5\n6 4\n4095",
                        Samples(file == std::string("out.ppm") ? 72 : 24,
                                file == std::string("out_sg.ppm") ? 1024 : 700)));
    CHECK(last("run plan.tsv -o w --expect want") ==
          "5 cases: 5 pass, 0 fail, 0 error, 0 not run; 0 known from before");
    put("want/b/out.ppm", picture("P6\n6 4\n4095", Samples(72, 701)));
    fs::remove(*this / "want/d/out_sg.ppm");
    CHECK(last("run plan.tsv -o w --expect want") ==
          "5 cases: 3 pass, 1 fail, 1 error, 0 not run; 3 known from before");
}
TEST_CASE("a failing case made small: the window around what fails, with its pattern, and the registers that "
          "it needs") {
    cfa::FramePtr raw(cfa::new_frame(FRAME_TYPE_IMG, FRAME_FMT_MONO, 41, 33, 1, 12));
    for (const auto &[y, x] : {std::pair{20, 17}, {22, 19}})
        cfa::sample(raw.get(), y, x) = 4000;
    const auto registers = std::make_shared<Registers>();
    for (const char *key : {"reg_cfa_vw_thd", "reg_cfa_edge_tol", "reg_cfa_ymoire_np"})
        find_register(*registers, key).info->store(registers->block.hw, 3);
    const auto fails = [](const Inputs &in) {
        const FRAME *const frame = in.mosaic->frame();
        return std::count(frame->data, frame->data + frame->width * frame->height, 4000u) == 2 &&
               in.registers->block.hw.reg_cfa_edge_tol == 3;
    };
    const Inputs least = minimised(make_inputs({}, Mosaic::from_frame(std::move(raw), {}), registers), fails);
    const FRAME *const frame = least.mosaic->frame();
    CHECK(frame->width == 5); // columns 16 to 20: an odd width cannot become even
    CHECK(frame->height == 3);
    CHECK(cfa::value(frame, 0, 1) == 4000);
    CHECK(cfa::value(frame, 2, 3) == 4000);
    CHECK(int32_t{least.registers->block.hw.reg_cfa_vw_thd} != 3);
    CHECK(fails(least));
}
