#include "tests/tools/cfatool/room.h"

TEST_CASE_FIXTURE(Room, "help, manual page and completion know the same subcommands and options") {
    const std::string file = source_root() + "/tools/cfatool/cfatool.bash";
    std::string bash = read_file(file), manual = read_file(source_root() + "/docs/man/cfatool.1");
    std::erase(bash, '"');    // as in "regs check"
    std::erase(manual, '\\'); // as in \-\-json
    std::set<std::string> names = matches_in(run("--help").out, "\n  ([a-z]+) ");
    for (const std::string group : {"regs", "regress"}) {
        CHECK(names.erase(group) == 1);
        for (const std::string &name : matches_in(run(group + " --help").out, "\n  ([a-z]+) "))
            names.insert(group + " " + name);
    }
    CHECK(names == matches_in(manual, "\n\\.SS ((?:reg[a-z]+ )?[a-z]+)"));
    CHECK(names == matches_in(bash, "\n    ((?:reg[a-z]+ )?[a-z]+)\\) echo -"));
    for (const std::string &name : names) {
        const size_t section = manual.find("\n.SS " + name), line = bash.find("\n    " + name + ") echo -");
        const auto options = matches_in(run(name + " --help").out, "\n  (-o|--[a-gi-z][a-z-]+)");
        CHECK_MESSAGE(options ==
                          matches_in(manual.substr(section, manual.find("\n.S", section + 1) - section),
                                     "\\s(-o|--[a-gi-z][a-z-]+)"),
                      name);
        CHECK_MESSAGE(options == matches_in(bash.substr(line, bash.find(";;", line) - line),
                                            "\\s(-o|--[a-gi-z][a-z-]+)"),
                      name);
    }
    for (const auto &[line, offered] : std::vector<std::pair<std::string, std::string>>{
             {"''", "chart mosaic preview run compare crop probe hex regress regs report view conformance "
                    "--version --help\n"},
             {"hex -", "--crop -o --back --bits --colour --help\n"},
             {"regs ''", "defaults check diff set dump doc --help\n"},
             {"chart zo", "zone-plate\n"},
             {"regs set x reg_cfa_vw", "reg_cfa_vw_thd=\n"}}) {
        put("c", "source '" + file + "'\nCOMP_WORDS=(\"$CFATOOL\" " + line +
                     ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_cfatool\necho ${COMPREPLY[@]}\n");
        CHECK(run_program({"/bin/bash", *this / "c"}).out == offered);
    }
}

TEST_CASE_FIXTURE(Room,
                  "the manual page of cfa_cmodel names the ten arguments in the order of its usage text") {
    std::string usage = run_program({tool_path()}).out;
    usage = usage.substr(usage.find(" ini_file") + 1, usage.find("\n[ 1]") - usage.find(" ini_file") - 1);
    std::replace(usage.begin(), usage.end(), '\n', ' ');
    CHECK(contains(read_file(source_root() + "/docs/man/cfa_cmodel.1"), "\n.I " + usage + "\n"));
}

TEST_CASE_FIXTURE(Room,
                  "command lines: names, numbers, files; what goes wrong leaves no file and changes none") {
    put("c.ini", "[cfa]\nreg_cfa_enable = 1\n");
    put("p.ppm", picture("P5 3 2 255", {1, 2, 3, 4, 5, 6}));
    const std::string files = list(), flat = "chart flat --bayer 0 -o x --size ",
                      set = "regs set c.ini reg_cfa_vw_thd";
    const std::string decimals = " is not a decimal number with at most three decimals";
    check(
        {{"--version", 0, "cfatool "},
         {"--help", 0, "Subcommands:"},
         {"chart --list", 0, "\nzone-plate      grey rings"},
         {"", 2, "cfatool: A subcommand is required (see 'cfatool --help')"},
         {"chrat scene", 2,
          "cfatool: unknown subcommand 'chrat'; did you mean 'chart'? (see 'cfatool --help')"},
         {"regs chek", 2,
          "cfatool regs: unknown subcommand 'chek'; did you mean 'check'? (see 'cfatool regs --help')"},
         {"xyzzy", 2, "cfatool: unknown subcommand 'xyzzy' (see"},
         {"--wrong", 2, "cfatool: "},
         {"chart a b", 2, "cfatool chart: "},
         {"chart --size", 2, "cfatool chart: "},
         {"regs diff c.ini", 2, "cfatool regs diff: "},
         {"chart", 2, "cfatool chart: NAME is required (see 'cfatool chart --help')"},
         {"report .", 2, "cfatool report: "},
         {"chart scnee --size 4x4 --bayer 0 -o x", 2,
          "cfatool chart: unknown chart 'scnee'; did you mean 'scene'? (see"},
         {flat + "4x4 --angle 3", 2, "cfatool chart: flat takes no --angle (see"},
         {"preview p.ppm", 2, "cfatool preview: -o is"},
         {"chart --bits 0x8", 2, "cfatool chart: --bits: '0x8' is not a plain decimal number (see"},
         {"chart --bits +8", 2, "'+8' is not a plain"},
         {"chart --seed -3", 2, "cfatool chart: "},
         {"chart --bits 32", 2, "--bits: 32 is outside 2 to 31 (see"},
         {"chart --bits 8 --bits 9", 2, "cfatool chart: "},
         {"chart --seed 9223372036854775808", 2,
          "--seed: 9223372036854775808 is outside 0 to 9223372036854775807"},
         {"chart --noise .5", 2, "'.5'" + decimals},
         {"chart --noise 5.", 2, "'5.'" + decimals},
         {"chart --noise 1.2345", 2, "'1.2345'" + decimals},
         {"chart --angle 360.001", 2, "--angle: 360.001 is outside 0 to 360 (see"},
         {flat + "640x", 2, "--size: '640x' is not of the form WIDTHxHEIGHT"},
         {flat + "6x4x3", 2, "of the form"},
         {flat + "0x4", 2, "0 is outside 1 to 65535"},
         {flat + "65535x65535", 2, "more than 2147483647 pixels"},
         {"hex p.ppm --crop 1,2,3", 2, "--crop: '1,2,3' holds 3 numbers, not 4"},
         {"hex p.ppm --crop 0,0,0,1", 2, "holds no pixel"},
         {"hex p.ppm --crop 0,0,1,0", 2, "holds no pixel"},
         {"hex p.ppm --crop 1,1,2,1", 0, "05\n06\n"},
         {"hex p.ppm --crop 1,1,3,1", 2, "p.ppm: --crop 1,1,3,1 leaves the picture of 3x2"},
         {"hex p.ppm --crop 1,1,2,2", 2, "leaves"},
         {set + "=4096", 2, "cfatool regs set: reg_cfa_vw_thd: 4096 does not fit 12 bits, 0..4095"},
         {set + "=0x10", 2, "cfatool regs set: reg_cfa_vw_thd: '0x10' is not a plain decimal number"},
         {set, 2, "cfatool regs set: 'reg_cfa_vw_thd' is not of the form key=value"},
         {set + "s=1", 2, "cfatool regs set: unknown key 'reg_cfa_vw_thds'; did you mean 'reg_cfa_vw_thd'?"},
         {set + "=1 reg_cfa_enable=2", 2, "reg_cfa_enable: 2 does not fit 1 bit, 0..1"},
         {"regs dump x", 2, "cfatool regs dump: x has no section of a block; name one with --block"},
         {"regs defaults cfaa", 2,
          "cfatool regs defaults: unknown block 'cfaa'; did you mean 'cfa'? (blocks: cfa, cmodel_top)"},
         {"regs check .", 2, ".: Is a directory"},
         {"regs diff c.ini .", 2, ".: is a folder"},
         {"compare p.ppm none", 2, "none: No such file or directory"},
         {"regs diff c.ini none", 2, "none: No such file"},
         {"probe none 1,1", 2, "none: No such file"},
         {"mosaic none --bayer 0 -o x", 2, "none: No such file"},
         {"conformance --sums c.ini", 2, "c.ini: line 1 is no sum"},
         {"compare p.ppm .", 2, "cfatool compare: one of p.ppm and . is a folder, the other is not"},
         {"compare . . --map x", 2, "cfatool compare: --map goes with two pictures, not with folders"},
         {"compare p.ppm p.ppm --common", 2, "cfatool compare: --common and --explain go with two folders"}});
    CHECK(list() == files);
    CHECK(get("c.ini") == "[cfa]\nreg_cfa_enable = 1\n");
}

TEST_CASE_FIXTURE(Room, "an output is whole or not there, and what stood there stays") {
    const std::string chart = "chart flat --bayer 0 --size 99x99 -o ";
    put("old", "old");
    put("a.ppm", "P5\n1 1\n255\na");
    put("bad.ppm", "P5\n2 1\n255\nabc"); // a byte too many: seen when everything is written
    check({{chart + "none/c", 2, "none/c: No such file or directory\n"},
           {chart + "/dev/full", 2, "/dev/full: No space left on device\n"},
           {"hex a.ppm -o /dev/full", 2,
            "/dev/full: No space left on device\n"}, // seen when the file is closed
           {"preview a.ppm -o ./a.ppm", 2, "./a.ppm: is what is read; write to another file\n"},
           {"hex a.ppm --bits 2", 2, "--bits and --colour go with --back"},
           {"preview bad.ppm -o old", 2, "bad.ppm: bytes follow the last sample\n"}});
    CHECK(contains(run("chart flat --bayer 0 --size 30x30 -o old", "ulimit -f 1;").err,
                   "old: File too large\n"));
    CHECK(get("old") == "old");
    check({{chart + "old", 0, ""}});
    CHECK(get("old").starts_with("P5\n"));
    CHECK(list() == "a.ppm\nbad.ppm\nold\n");
}
