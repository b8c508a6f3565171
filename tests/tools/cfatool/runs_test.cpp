#include <filesystem>
#include <regex>

#include "tests/tools/cfatool/room.h"
#include "tools/cfatool/base/files.h"
#include "tools/cfatool/runs/plane_file.h"
#include "tools/cfatool/runs/run_images.h"

using namespace cfatool;
namespace fs = std::filesystem;

TEST_CASE_FIXTURE(
    Room, "the list names the images of golden runs, each once, in the order in which the model makes them") {
    std::set<std::string> listed, recorded;
    const std::string model = read_file(source_root() + "/cmodel/cfa/src/cfa_model.cpp");
    size_t before = 0;
    for (const RunImage &image : run_images()) {
        CHECK(listed.insert(image.file).second);
        const size_t call =
            model.find("    " + std::string(image.stage) + "("); // of a stage; sub-steps have none
        CHECK((call == std::string::npos || call >= before ||
               image.stage == std::string("cfa_CalPhaseDifference")));
        before = call == std::string::npos ? before : call;
    }
    for (const auto &entry : fs::recursive_directory_iterator(source_root() + "/tests/data/golden"))
        if (entry.path().extension() == ".ppm")
            recorded.insert(entry.path().filename());
    CHECK(listed == recorded);
}

TEST_CASE_FIXTURE(
    Room, "run: the bytes of the ten-argument tool in a new folder, planes that are the images, no wait") {
    const std::string set =
        " --set reg_cfa_ymoire_enable=1 --set reg_cfa_shpn_enable=1 --set reg_cfa_vw_thd=9";
    put("r.ini", "[cfa]\nreg_cfa_vw_thd = 1 ; kept\n[cmodel_top]\nreg_hdr_enable = 1\nreg_img_bayerid = 1\n");
    put("t.ini", "[cmodel_top]\nreg_img_bayerid = 3\n");
    put("photo.ppm", picture("P6 6 4 255", Samples(72, 100)));
    put("small.ppm", picture("P5\n3 2\n4095", Samples(6, 1)));
    put("blank s/x", "");
    check({{"chart scene --size 40x30 --bayer 2 -o raw.ppm", 0, ""},
           {"run raw.ppm -r r.ini --bayer 2 --debug --planes -o run/" + set, 0, "run/\n"},
           {"run raw.ppm -r r.ini -o 'blank s/of file'", 0, ""},
           {"run raw.ppm -r r.ini --top t.ini -o top", 0, ""},
           {"mosaic photo.ppm --bayer 1 -o mosaic.ppm", 0, ""},
           {"run photo.ppm --mosaic --bayer 1 -o photo", 0, ""},
           {"compare photo/raw.ppm mosaic.ppm", 0, ""}});
    CHECK(get("run/cfa.ini") ==
          "[cfa]\nreg_cfa_vw_thd = 9 ; kept\nreg_cfa_ymoire_enable = 1\nreg_cfa_shpn_enable = "
          "1\n[cmodel_top]\nreg_hdr_enable = 1\nreg_img_bayerid = 1\n");
    for (const auto &[folder, bayer] :
         {std::pair("run", 2), {"blank s/of file", 1}, {"top", 3}, {"photo", 1}}) {
        CHECK(get(std::string(folder) + "/cmodel_top.ini")
                  .ends_with("reg_img_bayerid = " + std::to_string(bayer) + "\n"));
        CHECK(contains(get(std::string(folder) + "/run.json"), "\"bayer\": " + std::to_string(bayer)));
        fs::create_directory(*this / "tool");
        const std::string in = *this / folder, out = *this / "tool";
        REQUIRE(run_program({tool_path(), in + "/cfa.ini", out + "/log", "2", bayer == 2 ? "1" : "0", out,
                             in + "/cmodel_top.ini", in + "/raw.ppm", out + "/out.ppm", out + "/out_dc.ppm",
                             out + "/out_sg.ppm"})
                    .status == 0);
        const auto untimed = [](const std::string &log) {
            return std::regex_replace(log, std::regex("\n.{19}"), "\n").substr(19);
        };
        CHECK(untimed(read_file(in + "/cfa.log")) == untimed(read_file(out + "/log")));
        fs::remove(out + "/log");
        size_t pictures = 0;
        for (const auto &entry : fs::directory_iterator(in))
            if (entry.path().extension() == ".ppm" && ++pictures > 0 && entry.path().filename() != "raw.ppm")
                CHECK_MESSAGE(read_file(entry.path()) ==
                                  read_file(out + "/" + entry.path().filename().string()),
                              entry.path());
        CHECK(pictures == (bayer == 2 ? 38 : 4));
    }
    // The planes of one side in a picture's bytes are the other side's, and there is one of each.
    size_t planes = 0;
    for (const auto &entry : fs::directory_iterator(*this / "run/planes"))
        planes += cfa::find_plane(entry.path().stem().c_str()) != nullptr;
    CHECK(planes == cfa::planes().size());
    for (const auto &[plane, image] :
         std::vector<std::pair<std::string, std::string>>{{"out_rgb", "out"},
                                                          {"out_sg", "out_sg"},
                                                          {"DirInfo", "dbg_img_DirInfo"},
                                                          {"YMoire", "dbg_img_YMoire"},
                                                          {"raw", "raw"}})
        check({{"compare run/planes/" + plane + ".npy run/" + image + ".ppm --tolerance " +
                    (plane == "YMoire" ? "3840" : "0"),
                0, ""}});
    const std::string raw = get("run/planes/raw.npy"), magic = "\x93NUMPY\1";
    CHECK(raw.starts_with(
        magic + std::string("\0\x76\0{'descr': '<u2', 'fortran_order': False, 'shape': (30, 40), }", 64)));
    CHECK(raw.size() == 128 + 2400);
    CHECK(contains(get("run/planes/GH.npy"),
                   "{'descr': '<i4', 'fortran_order': False, 'shape': (30, 40, 3), }"));
    for (const std::string &part : {std::string(R"("registers": {
    "reg_cfa_ymoire_enable": 1,
    "reg_cfa_vw_thd": 9,
    "reg_cfa_shpn_enable": 1,
    "reg_img_bayerid": 2,
    "reg_hdr_enable": 1
  },)"),
                                    "\"out.ppm\": \"" + sha256_of_file(*this / "run/out.ppm") + "\""})
        CHECK(contains(get("run/run.json"), part));
    CHECK(!contains(get("top/run.json"), "reg_hdr_enable")); // a section of the other block does not count
    const std::string files = list();
    check({{"run none -o new", 2, "none: No such file or directory\n"},
           {"run raw.ppm -r none -o new", 2, "none: No such"},
           {"run raw.ppm --top none -o new", 2, "none: No such"},
           {"run raw.ppm -o no/new", 2, "no/new: No such"},
           {"run raw.ppm -o run", 2, "run: is there already; -o names a new folder\n"},
           {"run photo.ppm -o new", 2,
            "photo.ppm: is no P5; --mosaic samples a colour picture through the pattern\n"},
           {"run raw.ppm --mosaic -o new", 2, "raw.ppm: is greyscale; an RGB picture is needed\n"},
           {"run raw.ppm --set vw_thd=1 -o new", 2, "unknown key 'vw_thd'; did you mean 'reg_cfa_vw_thd'?\n"},
           {"run small.ppm -o new", 2, "cfatool run: Picture of 3 x 2 is too small"},
           {"run t.ini -o new", 2, "(must be 'P5') (error loading 't.ini')\n"},
           {"run raw.ppm", 2, "-o is required"}});
    CHECK(list() == files);
    put("cut.ppm", get("raw.ppm").substr(0, 99));
    CHECK(contains(run("run cut.ppm -o cut").err, "Unexpected end of file in 'cut.ppm': "));
}

TEST_CASE_FIXTURE(Room, "NumPy files: what is a plane, in any form of whole numbers") {
    const auto npy = [](const std::string &dictionary, const std::string &samples, char version = 1) {
        const std::string length = {static_cast<char>(dictionary.size()), 0};
        return "\x93NUMPY" + std::string{version, 0} + length + (version > 1 ? std::string(2, '\0') : "") +
               dictionary + samples;
    };
    const auto header = [](const std::string &type, const std::string &shape = "(1, 2)",
                           const char *order = "False") {
        return "{'descr': '" + type + "', 'fortran_order': " + order + ", 'shape': " + shape + ", }\n";
    };
    using Values = std::vector<int32_t>;
    for (const auto &row : std::vector<std::pair<std::string, Values>>{
             {npy(header("|u1"), "\x01\xff"), {1, 255}},
             {npy(header("|i1", "(2, 1)"), "\x01\xff"), {1, -1}},
             {npy(header("|b1"), std::string("\0\1", 2)), {0, 1}},
             {npy(header("<u2"), std::string("\1\0\0\x80", 4)), {1, 32768}},
             {npy(header(">i2", "(1, 2, 1)"), "\x01\x02\xff\xfe"), {258, -2}},
             {npy(header("<i4", "(1,1,3)"), std::string("\1\0\0\0\xff\xff\xff\xff\0\1\0\0", 12)),
              {1, -1, 256}},
             {npy(header("<i8"), std::string("\5\0\0\0\0\0\0\0\xfe\xff\xff\xff\xff\xff\xff\xff", 16), 2),
              {5, -2}},
             {npy(header(">u8", "(1, 1)"), std::string("\0\0\0\0\0\0\1\1", 8)), {257}}}) {
        put("p.npy", row.first);
        CHECK_MESSAGE(PlaneFile(*this / "p.npy").read() == row.second, row.first);
    }
    for (const auto &[bytes, reason] : std::vector<std::pair<std::string, std::string>>{
             {"\x93NUMPY", "cut short in the NumPy header"},
             {"\x93NUMBY" + npy(header("|u1"), "ab").substr(6), "is no NumPy file"},
             {npy(header("<i4"), "1234567"), "cut short: 7 bytes of samples, 8 expected"},
             {npy(header("|u1"), "abc"), "too long: 3 bytes of samples, 2 expected"},
             {npy(header("<i8", "(782599856, 982129412, 3)"), std::string(512, 'x')),
              "more than 2147483647 samples"}, // 2^64 + 512 bytes

             {npy(header("<f4"), "12345678"), "no plane of whole numbers"},
             {npy(header("|u1", "(1, 2)", "True"), "ab"), "no plane"},
             {npy(header("|u1", "(2,)"), "ab"), "no plane"},
             {npy(header("|u1", "(1, 1, 2)"), "ab"), "no plane"},
             {npy(header("<i8", "(1, 1)"), std::string("\0\0\0\0\1\0\0\0", 8)),
              "holds numbers beyond 32 bits"},
             {npy(header("<i8", "(1, 1)"), std::string("\0\0\0\0\xff\xff\xff\xff", 8)), "beyond 32 bits"}}) {
        put("p.npy", bytes);
        const Outcome outcome = run("compare p.npy p.npy --map m");
        CHECK(outcome.status == 2);
        CHECK_MESSAGE(contains(outcome.err, "p.npy: "), outcome.err);
        CHECK_MESSAGE(contains(outcome.err, reason), outcome.err);
    }
    put("p.npy", "\x93NUMPY\1" + std::string("\0\xff\xff", 3) + "{'descr':" + std::string(65484, ' ') +
                     "'|u1','fortran_order':False,'shape':(1,1)}z"); // 65535 bytes
    CHECK(PlaneFile(*this / "p.npy").read() == Values{'z'});
    put("p.npy", npy(header("<u2", "(3, 4)"),
                     std::string("\0\0\1\0\2\0\3\0\4\0\5\0\6\0\7\0\x08\0\x09\0\x0a\0\x0b\0", 24)));
    CHECK(PlaneFile(*this / "p.npy").read(1, 1, 2, 2) == Values{5, 6, 9, 10});
}

TEST_CASE_FIXTURE(Room, "a run folder: known images in order, others behind them by name, each at a pixel") {
    for (const char *name : {"out.ppm", "a.ppm", "dbg/dbg_img_GH.ppm", "dbg/zz.ppm"})
        put(name, picture("P5 4 3 4095", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    put("raw.ppm", picture("P6 4 3 255", Samples(36, 5)));
    put("dbg/note.txt", "");
    put("cmodel_top.ini", "[cmodel_top]\nreg_img_bayerid = 2\n"); // Gr R / B Gb
    check(
        {{"probe . 1,0", 0,
          "pixel 1,0 of ., R site of pattern 2\n"
          "raw.ppm                      5/5/5           the mosaic as read\n"
          "dbg_img_GH.ppm               2               candidate picture that interpolates green along the "
          "row; shown: green\n"
          "out.ppm                      2               RGB output: demosaiced, moire removed, detail added\n"
          "a.ppm                        2               \nzz.ppm                       2               \n"},
         {"probe . 0,1", 0, ", B site of pattern 2\n"},
         {"probe . 3,0 --window 1", 0, "green\n     3 [4]\n     7  8 \n"},
         {"probe . 1,1 --window 1", 0, "green\n      1   2   3 \n      5  [6]  7 \n      9  10  11 \n"},
         {"probe . 3,2 --window 1 --json", 0, R"("left":2,"top":1,"channels":1,"rows":[[7,8],[11,12]]})"},
         {"probe . 4,1", 2, "./raw.ppm: has no pixel 4,1: it is 4x3"},
         {"probe . 1,3", 2, "has no pixel 1,3"},
         {"probe . 1", 2, "cfatool probe: X,Y: '1' holds 1 numbers, not 2 (see"}});
    // Its image holds the sample of the pixel to the left; the first one is nowhere.
    put("one/dbg_img_GV_lp.ppm", get("out.ppm"));
    put("one/planes/GV_hp.npy",
        "\x93NUMPY\1" + std::string("\0\x40\0", 3) + "{'descr':'<i2','fortran_order':False,'shape':(3,4)}" +
            std::string(13, ' ') + std::string("\0\0\xff\xff\1\0\2\0", 8) + std::string(16, '\7'));
    check({{"probe one 1,0", 0,
            "\ndbg_img_GV_lp.ppm            1               green average along the column\nGV_hp.npy        "
            "            -1  "},
           {"probe one 0,1", 0, "ppm            4   "},
           {"probe one 0,0 --window 1", 0,
            "ppm            not shown       green average along the column\n    [not shown]         1 \n     "
            "        4          5 \n"},
           {"probe one 0,0 --json", 0, R"("channels":1,"rows":[[null]])"}});
    put("one/out.ppm", "P5\n4 3\n4095\nshort");
    const Outcome short_one = run("probe one 1,0");
    CHECK(short_one.status == 2);
    CHECK(short_one.err == "one/out.ppm: cut short: 5 bytes of samples, 24 expected\n");
    CHECK(contains(short_one.out, "\nGV_hp.npy                    -1  "));
}
