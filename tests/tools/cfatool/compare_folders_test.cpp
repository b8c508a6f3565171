#include <filesystem>

#include "tests/tools/cfatool/room.h"

namespace fs = std::filesystem;

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
