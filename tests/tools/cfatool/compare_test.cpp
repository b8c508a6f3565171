#include <filesystem>
#include <png.h>
#include <sstream>

#include "tests/tools/cfatool/room.h"
#include "tools/cfatool/compare/difference_kind.h"
#include "tools/cfatool/pictures/png_file.h"

namespace fs = std::filesystem;

TEST_CASE_FIXTURE(Room, "compare of two pictures: status and words, for scripts too") {
    Samples a(10 * 8 * 3, 1000), b = a;
    b[(2 * 10 + 7) * 3 + 2] = 1010; // the first in raster order
    b[(5 * 10 + 3) * 3 + 0] = 996;
    b[(5 * 10 + 4) * 3 + 2] = 0;
    b[(5 * 10 + 4) * 3 + 1] = 5000; // above the maximum value
    put("a", picture("P6 10 8 4095", a));
    put("b", picture("P6 10 8 4095", b));
    put("grey", picture("P5 10 8 4095", Samples(80, 1000)));
    put("deep", picture("P6 10 8 8191", a));
    put("cut", get("a").substr(0, get("a").size() - 1));
    put("tall", "P5\n0 2147483647\n255\n"); // rows without pixels are compared at once
    // The mean difference of blue is 1010 / 80. PSNR: 10 log10(4095^2 / ((10^2 + 4^2 + 1000^2 + 4000^2) /
    // 240)).
    check(
        {{"compare a b --bayer 3 --max-list 2", 1,
          "a and b differ: 10x8, 3 channels, maximum value 4095\n"
          "        differing      share      largest           mean\n"
          "  R                1    1.25000%            4       0.050000\n"
          "  G                1    1.25000%         4000      50.000000\n"
          "  B                2    2.50000%         1000      12.625000\n"
          "  all              4    1.66667%         4000      20.891667\n"
          "PSNR 23.74 dB\nbounding box 3,2,5,4 (X,Y,W,H)\n"
          "first difference: x 7, y 2, channel B: 1000 against 1010 (Gr site)\n"
          "  x 7, y 2, channel B: 1000 against 1010 (Gr site)\n  x 3, y 5, channel R: 1000 against 996 (B "
          "site)\n"},
         {"compare a b --json --bayer 0 --max-list 1", 1,
          R"({"a":"a","b":"b","equal":false,"channels":[{"name":"R","differing":1,)"
          R"("samples":80,"largest":4,"mean":0.05},{"name":"G","differing":1,"samples":80,"largest":4000,"mean":50.0},)"
          R"({"name":"B","differing":2,"samples":80,"largest":1000,"mean":12.625}],"psnr":23.7427,"box":[3,2,5,4],)"
          R"("first":{"x":7,"y":2,"channel":"B","a":1000,"b":1010,"site":"Gb"},)"
          R"("list":[{"x":7,"y":2,"channel":"B","a":1000,"b":1010,"site":"Gb"}]})"
          "\n"},
         {"compare a a --json", 0, R"("psnr":null})"},
         {"compare a b --tolerance 10", 1, "maximum value 4095, tolerance 10\n"},
         {"compare a b --tolerance 4000", 0, "a and b are equal within the tolerance of 4000: 10x8"},
         {"compare a b --crop 0,0,7,8", 1, "bounding box 3,5,2,1"},
         {"compare a b --crop 5,3,5,5", 0, "a and b are equal: 5x5"},
         {"compare a grey", 1, "size mismatch: a is 10x8 with 3 channels, grey is 10x8 with 1 channel\n"},
         {"compare a deep", 1, "depth mismatch: maximum value 4095 in a, 8191 in deep\n"},
         {"compare a cut", 2, "cut: cut short: 479 bytes of samples, 480 expected\n"}});
    CHECK(run("compare tall tall", "ulimit -t 3;").out ==
          "tall and tall are equal: 0x2147483647, 1 channel, maximum value 255\n");
    put("a", picture("P5 1 1 4294967295", {4294967295}));
    put("b", picture("P5 1 1 4294967295", {1}));
    check({{"compare a b", 1, "first difference: x 0, y 0: 4294967295 against 1\n"}});
    // Dark grey where nothing differs, else by bits: blue, magenta, yellow.
    put("a", picture("P5 5 1 511", {0, 511, 5, 300, 0}));
    put("b", picture("P5 5 1 511", {0, 511, 4, 316, 511}));
    check({{"compare a b --map m", 1, ""}});
    CHECK(cfatool::read_png(*this / "m").samples ==
          std::vector<uint8_t>{0, 0, 0, 96, 96, 96, 0, 80, 255, 255, 0, 160, 255, 240, 0});
}

TEST_CASE_FIXTURE(Room, "PNG files and the images of a run are compared in their own range") {
    const auto row = [](uint32_t last) { return Samples{1, 2, last}; };
    put("p8", picture("P5 3 1 255", row(9)));
    put("p16", picture("P5 3 1 4095", row(700)));
    const uint8_t grey[] = {1, 2, 9};
    const uint16_t deep[] = {1, 2, 701};
    for (const bool is_deep : {false, true}) {
        png_image image = {};
        image.version = PNG_IMAGE_VERSION;
        image.width = 3, image.height = 1, image.format = is_deep ? PNG_FORMAT_LINEAR_Y : PNG_FORMAT_GRAY;
        const void *const samples = is_deep ? static_cast<const void *>(deep) : grey;
        REQUIRE(png_image_write_to_file(&image, (*this / (is_deep ? "deep.png" : "grey.png")).c_str(), 0,
                                        samples, 0, nullptr));
    }
    put("dbg_img_SigH.ppm", picture("P5 1 1 16777215", {0}));
    put("dbg_img_YMoire.ppm", picture("P5 1 1 255", {0}));
    put("one24", picture("P5 1 1 16777215", {131071}));
    put("one8", picture("P5 1 1 255", {255}));
    check({{"compare grey.png p8", 0, "grey.png and p8 are equal: 3x1, 1 channel, maximum value 255\n"},
           {"compare p16 deep.png", 1, "x 2, y 0: 700 against 701\n"},
           {"compare grey.png p16", 1, "depth mismatch: maximum value 255 in grey.png, 4095 in p16\n"},
           {"compare p16 deep.png --quiet", 1, "differ: 3x1, 1 channel, maximum value 4095\n"},
           {"compare dbg_img_SigH.ppm one24", 1, "PSNR 0.00 dB"},
           {"compare dbg_img_YMoire.ppm one8", 1,
            "PSNR 0.00 dB"}}); // variances end at 131071; 12 bits are cut to 8
    CHECK(!contains(run("compare p16 deep.png --quiet").out, "PSNR"));
    put("wide", picture("P5 2000 1 255", Samples(2000, 0)));
    Samples samples(2000, 0);
    samples[700] = 255;
    put("spot", picture("P5 2000 1 255", samples));
    check({{"compare wide spot --map m", 1, ""}}); // a pixel of 2000 is painted five wide
    const cfatool::RgbPicture map = cfatool::read_png(*this / "m");
    for (size_t x = 697; x < 704; ++x)
        CHECK((map.samples[3 * x] == 255) == (x >= 698 && x <= 702));
}

TEST_CASE_FIXTURE(Room, "what kind of difference it is") {
    Samples a;
    for (uint32_t i = 0; i < 3 * 12 * 10; ++i)
        a.push_back(i * i * 7 % 3001 | 8);
    const auto grey = [&](auto change, uint32_t range = 4095, const char *head = "P5 12 10 4095") {
        const bool colour = head[1] == '6';
        Samples from(a.begin(), a.begin() + (colour ? 360 : 120)), b = from;
        for (int y = 0; y < 10; ++y)
            for (int x = 0; x < 12; ++x)
                change(from, b, x, y, colour ? 3 * (12 * y + x) : 12 * y + x);
        put("a", picture(head, from));
        put("b", picture(head, b));
        std::string text;
        for (const std::string &kind : cfatool::difference_kinds(
                 *this / "a", *this / "b", cfatool::compare_pictures(*this / "a", *this / "b", {}), range, 3,
                 cfatool::Sites::all))
            text += kind + ";";
        return text;
    };
    using S = Samples;
    CHECK(grey([](S &, S &b, int, int, int i) { b[i] &= ~8u; }) == "bit 3 is lost in B;");
    CHECK(grey([](S &, S &b, int x, int, int i) { b[i] += x % 3 == 0 ? 5 : 0; }) == "B is A + 5;");
    CHECK(grey([](S &, S &b, int, int, int i) { b[i] = (b[i] << 8 & 0xFF00) | b[i] >> 8; }, 0) ==
          "the bytes are swapped;");
    CHECK(grey([](S &from, S &b, int x, int, int i) { b[i] = x > 0 ? from[i - 1] : 8; }) ==
          "B is A shifted by one column to the right;");
    CHECK(grey([](S &from, S &b, int, int y, int i) { b[i] = y < 9 ? from[i + 12] : 8; }) ==
          "B is A shifted by one row up;");
    CHECK(grey([](S &, S &b, int x, int y, int i) { b[i] += y == 0 ? x : 0; }) == "only in the first row;");
    CHECK(grey([](S &, S &b, int x, int y, int i) { b[i] += x > 9 ? y + x : 0; }) ==
          "only in the last 2 columns;");
    CHECK(grey([](S &, S &b, int x, int y, int i) { b[i] += x % 2 == 1 && y % 2 == 0 ? y + x : 0; }) ==
          "only at Gr sites;"); // RGGB
    CHECK(grey([](S &, S &b, int x, int y, int i) { b[i + 1] += y + x; }, 4095, "P6 12 10 4095") ==
          "only in channel G;");
    CHECK(grey([](S &from, S &b, int x, int y, int i) {
              if (y % 3 == 0)
                  from[i] = 4095, b[i] -= x;
          }) == "only where a sample is 4095 or more;");
    CHECK(grey([](S &, S &b, int x, int y, int i) { b[i] += x * y % 7; }) == "");
    const std::string npy = "\x93NUMPY\1" + std::string("\0\x3f\0", 3) +
                            "{'descr': '|i1', 'fortran_order': False, 'shape': (2, 4)}     \n";
    put("a.npy", npy + "\1\2\3\4\5\6\7\10"),
        put("b.npy", npy + "\xff\xfe\xfd\xfc\xfb\xfa\xf9\xf8"); // -1 to -8
    CHECK(cfatool::difference_kinds(*this / "a.npy", *this / "b.npy",
                                    cfatool::compare_pictures(*this / "a.npy", *this / "b.npy", {}), 4095, 3,
                                    cfatool::Sites::all)
              .empty());
    CHECK(grey([](S &, S &b, int x, int y, int i) { b[i] += x == 5 && y < 3 ? 4 : 0; }) ==
          ""); // three may be chance
}

TEST_CASE_FIXTURE(Room, "the stage that is wrong, or those that may be: planes of one run changed by hand") {
    const std::string all = "--set reg_cfa_ymoire_enable=1 --set reg_cfa_shpn_enable=1 ";
    check({{"chart scene --size 32x24 --bayer 1 -o raw.ppm", 0, ""},
           {"run raw.ppm --bayer 1 --debug --planes -o all " + all, 0, "all\n"},
           {"run raw.ppm --bayer 1 --debug --planes --set reg_cfa_cmoire_enable=0 -o off", 0, ""},
           {"run raw.ppm --bayer 1 --set reg_cfa_enable=0 -o bypass", 0, ""},
           {"run raw.ppm --bayer 1 --debug --planes -o same " + all, 0, ""},
           {"compare all same", 0, "\nno difference in 82 files\n"}});
    put("off/planes/cored.npy", get("all/planes/cored.npy")); // left from another run
    fs::copy(*this / "same", *this / "regs", fs::copy_options::recursive);
    put("regs/cfa.ini", get("same/cfa.ini") + "reg_cfa_vw_thd = 7\n"); // alone makes no difference
    check({{"compare all regs", 0,
            "register reg_cfa_vw_thd: 1500 against 7\nequal (82): raw.npy raw.ppm AvgRGB.npy "
            "dbg_img_AvgRGB.ppm GH.npy"}});
    put("one/out.ppm", get("all/out.ppm"));
    check({{"compare all one", 1, "\nno difference in 1 file, "},
           {"compare all one --common", 0, "\nno difference in 1 file, "}});
    put("k/out_dc.ppm", picture("P5 3 2 4095", {1, 2, 3, 4, 5, 6})), put("k/out_sg.ppm", get("k/out_dc.ppm"));
    put("l/out_dc.ppm", picture("P5 3 2 4095", {6, 7, 8, 9, 10, 11})),
        put("l/out_sg.ppm", picture("P5 3 2 4095", {17, 18, 19, 20, 5, 6}));
    for (
        const char *kind :
        {R"("plane":"out_dc","stage":"gen_dst_dc","verdict":"suspect","not_seen":null,"kinds":["B is A + 5"]})",
         R"("not_seen":null,"kinds":["bit 4 is set in B"]})"})
        check({{"compare k l --json", 1, kind}});
    struct Row {
        std::string run, files; // whose first or, with !, last sample is inverted
        bool exact;             // with planes; else debug images and outputs alone
        std::string text;
    };
    const std::string off =
        "\noff (11): cfa_DeYMoire cfa_CalYMoireWgt cfa_CalColorMoireSts cfa_CalPhaseDifference sg_";
    for (
        const Row &row : std::vector<Row>{
            {"all", "SigH DirInfo cfa_RGB", true,
             "first stage that differs: cfa_CalVarOfColorDiffAtG, SigH at green sites: 1 of 768 samples "
             "differ, largest 1, first at x 0, y 0"}, // Gb B: a green corner
            {"all", "!SigH DirInfo", true,
             "first stage that differs: cfa_CalVarOfColorDiffAtG, SigH at green"},
            {"all", "AHDiff SigH SigV", true, "differs: cfa_CalVarOfColorDiffAtG, AHDiff: 1 of"},
            {"all", "MaxRGB_lpf MoireWgt YMoire", true, "differs: cfa_DeYMoire, MaxRGB_lpf: 1"},
            {"all", "MoireWgt YMoire", true, "differs: cfa_CalYMoireWgt, MoireWgt: 1"},
            {"all", "GH MoireWgt_W2", true, "differs: cfa_CalPredictPixel, GH: 1"},
            {"all", "rgb_luma HF", true, "differs: sg_get_rgb_luma, rgb_luma"},
            {"all", "CMOut rgb_luma", true, "differs: cfa_DeColorMoire, CMOut"},
            {"all", "CMOut rgb_luma", true,
             R"({"stage":"sg_get_rgb_luma","verdict":"differs by its input"})"},
            {"all", "GH MoireWgt_W2", true,
             R"({"stage":"cfa_CalYMoireWgt","verdict":"differs by its input"})"},
            {"all", "dbg_img_DirInfo.ppm", false,
             R"({"stage":"cfa_CalAvg","verdict":"equal"},{"stage":"cfa_CalPredictPixel","verdict":"suspect"})"},
            {"all", "dbg_img_DirInfo.ppm", false, R"({"stage":"gen_MaxRGB_1ch","verdict":"not seen"})"},
            {"all", "raw AvgRGB", true, "the mosaics differ: raw: 1 of 768"},
            {"off", "pd_wt YMoire CMOut", true, "differs: copy_to_dst, YMoire: 1"},
            {"off", "cored", true, "what differs is no part of the pipeline: cored.npy: 1"},
            {"off", "pd_wt", true, "no part of the pipeline: pd_wt.npy"},
            {"off", "pd_wt CMOut", true, "differs: copy_to_dst, CMOut"},
            {"all", "dbg_img_DirInfo.ppm", false,
             "\nsuspects: cfa_CalPredictPixel, cfa_CalClassifier, cfa_CalVarOfColorDiffAtRB, "
             "cfa_CalDirectionInfo\n"},
            {"all", "dbg_img_DirInfo.ppm", false,
             "\nnot seen, its image shows the green sites only: SigH at red and blue sites, SigV at red and "
             "blue sites\n"},
            {"all", "dbg_img_cfa_RGB.ppm", false,
             "\nnot seen, its image is shifted by a pixel: GH_lp, GV_lp\n"},
            {"all", "dbg_img_AvgRGB.ppm out.ppm", false, "first stage that differs: cfa_CalAvg, AvgRGB"},
            {"all", "dbg_img_SigH.ppm", false, "\nsuspects: cfa_CalPredictPixel, cfa_CalVarOfColorDiffAtG\n"},
            {"all", "dbg_sg_delta_core_4x_8b.ppm", false,
             "\nsuspects: sg_get_dalta_HF, sg_get_delta_MF, sg_coring_proc\n"},
            {"off", "out_sg.ppm", false, "first stage that differs: sharpen_gain_bypass, out_sg"},
            {"off", "out_dc.ppm", false, "\nsuspects: cfa_CalPredictPixel, gen_MaxRGB_1ch, gen_dst_dc\n"},
            {"off", "out_dc.ppm", false, off},
            {"bypass", "out.ppm", false, "differs: cfa_bypass, out_rgb"}}) {
        fs::remove_all(*this / "b");
        fs::copy(*this / row.run, *this / "b", fs::copy_options::recursive);
        if (!row.exact)
            fs::remove_all(*this / "b/planes");
        std::istringstream files(row.files);
        for (std::string name; files >> name;) {
            const bool last = name[0] == '!', npy = !contains(name, ".ppm");
            const std::string file = "b/" + (npy ? "planes/" + name.substr(last) + ".npy" : name);
            std::string bytes = get(file);
            bytes[last ? bytes.size() - 4 : npy ? 128 : bytes.size() - 1] ^= 1;
            put(file, bytes);
        }
        if (!contains(row.files, "raw")) // as a simulation leaves it: the mosaic is taken as equal
            fs::remove(*this / "b/raw.ppm"), fs::remove(*this / "b/planes/raw.npy");
        INFO(row.files);
        check({{(row.text[0] == '{' ? "compare --json --common " : "compare --common ") + row.run + " b", 1,
                row.text}});
    }
    put("b/raw.ppm", get("raw.ppm"));
    put("b/dbg_img_GH.ppm", "P5 2 1 4095\n\1");
    put("empty/note.txt", "");
    put("b/cfa.ini", "[cfa]\nreg_cfa_vw_thd = 7\n");
    const Outcome outcome = run("compare --quiet --common bypass b");
    CHECK(outcome.out == "register reg_cfa_enable: 0 against 1\nregister reg_cfa_vw_thd: 1500 against 7\n" +
                             outcome.out.substr(outcome.out.find("suspects")));
    CHECK(run("compare all b").status == 2);
    CHECK(contains(run("compare all b").err, "b/dbg_img_GH.ppm: cut short"));
    CHECK(contains(run("compare all b").out, "\nnot readable (1): dbg_img_GH.ppm\n"));
    // Registers from the record alone, and from nowhere.
    for (const char *file :
         {"off/cfa.ini", "off/cmodel_top.ini", "same/cfa.ini", "same/cmodel_top.ini", "same/run.json"})
        fs::remove(*this / file);
    check({{"compare off same --common", 1, off},
           {"compare same same", 0, "\nno registers in either folder: every stage is taken as on\n"},
           {"compare all off --quiet", 1, "register reg_cfa_ymoire_enable: 1 against 0\n"}});
    put("same/run.json", "{\"registers\": 3}");
    check({{"compare all same", 2, "same/run.json: is no record of a run\n"}});
    fs::remove(*this / "same/run.json");
    check({{"compare all nosuch", 2, "nosuch: No such file or directory\n"},
           {"compare all empty", 2, "cfatool compare: no image is in both all and empty\n"},
           {"compare all raw.ppm", 2, "is a folder, the other is not"},
           {"compare all bypass", 1, "\nonly in all ("},
           {"compare all same --json", 0,
            R"("suspects":[],"first":null,"first_stage":null})"
            "\n"}});
}

TEST_CASE_FIXTURE(
    Room, "explain: a stage that is wrong itself, one whose input alone is wrong, one that cannot be run") {
    check({{"chart scene --size 24x20 --bayer 0 -o raw.ppm", 0, ""}});
    const std::string run_it =
        "run raw.ppm --planes --set reg_cfa_ymoire_enable=1 --set reg_cfa_shpn_enable=1 ";
    // Another register in force changes direction and all behind it; B's own registers explain everything but
    // what is poked.
    check({{run_it + "-o a", 0, ""},
           {run_it + "--set reg_cfa_edgee_thd=3 --set reg_cfa_edgee_thd2=3 -o b", 0, ""}});
    check({{"chart scene --size 24x20 --bayer 0 --noise 40 -o noise.ppm", 0, ""},
           {"run noise.ppm -r a/cfa.ini --top a/cmodel_top.ini --planes -o noise", 0, ""}});
    const Outcome all = run("compare a noise --explain --quiet");
    CHECK(all.out.starts_with("the mosaics differ: raw: "));
    CHECK(std::count(all.out.begin(), all.out.end(), '\n') == 23); // every stage, and each is right
    CHECK(!contains(all.out, "wrong itself"));
    CHECK(!contains(all.out, "cannot be"));
    std::string bytes = get("b/planes/YMoire.npy");
    bytes[128] ^= 1;
    put("b/planes/YMoire.npy", bytes);
    const std::string text = run("compare a b --explain").out;
    CHECK(text.starts_with(
        "register reg_cfa_edgee_thd2: 200 against 3\nregister reg_cfa_edgee_thd: 200 against 3\nequal ("));
    const std::string fine = ": right for B's own input; only its input is wrong\n";
    for (const std::string &line :
         {"\ncfa_CalDirectionInfo" + fine, "\ncfa_CalRGB" + fine,
          std::string(
              "\ncfa_DeYMoire: wrong itself: on B's own input, YMoire at x 0, y 0, channel R: the model "),
          "\nsharpen_gain_main_proc" + fine})
        CHECK_MESSAGE(contains(text, line), line);
    CHECK(!contains(text, "cfa_CalAvg:"));
    bytes = get("b/planes/MoireWgt.npy");
    bytes[128] ^= 1;
    put("b/planes/MoireWgt.npy", bytes);
    check({{"compare a b --explain --quiet", 1,
            "\ncfa_DeYMoire: cannot be judged: it contains cfa_CalYMoireWgt, which is "
            "wrong\ncfa_CalYMoireWgt: wrong itself: on B's own input, MoireWgt at x 0, y 0: the model "}});
    fs::remove(*this / "b/planes/RatioV.npy");
    check(
        {{"compare a b --explain --quiet", 1, "\ncfa_CalRGB: cannot be run again: B has no exact RatioV\n"}});
    put("b/planes/GV.npy", get("b/planes/LH.npy"));
    CHECK(contains(run("compare a b --explain").err, "b/planes/GV.npy: is not of the size of the mosaic\n"));
}
