#include "tests/tools/cfatool/room.h"

TEST_CASE_FIXTURE(
    Room,
    "the page of two runs: planes of both in pipeline order, registers, verdicts, what cannot be shown") {
    const std::string raw = picture("P5 4 2 4095", {1, 2, 3, 4, 5, 6, 7, 8});
    for (const char *side : {"a", "b"}) {
        put(side + std::string("/raw.ppm"), raw);
        put(side + std::string("/cmodel_top.ini"), "[cmodel_top]\nreg_img_bayerid = 2\n"); // Gr R / B Gb
    }
    put("a/cfa.ini", "[cfa]\nreg_cfa_edge_tol = 300\n");
    put("b/cfa.ini", "[cfa]\n");
    put("a/run.json", R"({"call":["cfatool","run","</script>"]})");
    put("a/dbg/dbg_img_DirInfo.ppm", picture("P5 4 2 4095", {0, 1, 2, 0, 1, 2, 0, 1}));
    put("b/dbg_img_DirInfo.ppm", picture("P5 4 2 4095", {0, 1, 2, 0, 1, 2, 2, 1}));
    put("a/dbg_img_GH.ppm", "P5\n4 2\n4095\nshort");
    put("b/dbg_img_GV.ppm", raw);
    put("a/out.ppm", picture("P6 1 1 4095", {1, 2, 3}));
    put("b/out.ppm", picture("P6 1 2 4095", {1, 2, 3, 4, 5, 6}));
    put("a/other.ppm", raw);
    put("b/other.ppm", picture("P5 4 2 4095", {1, 2, 3, 20, 21, 22, 23, 8}));
    put("a/zz.ppm", "P5\n0 0\n255\n");
    check({{"report a b -o page", 0, "page/index.html: 8 planes and images; "},
           {"report a -o one.html", 0, "one.html: 6 planes"},
           {"report none -o x", 2, "none: No such"},
           {"report page -o x", 2, "page: holds no plane and no image"}});
    const std::string page = get("page/index.html");
    for (const char *part :
         {R"("title":"a : b")", R"("bayer":2,"sites":["Gr","R","Gr","R","B","Gb",)", R"(\u003c/script>)",
          R"("key":"reg_cfa_edge_tol")", R"("reset":256,"values":[300,256]})",
          R"({"id":"dbg_img_GH.ppm","name":"GH",)", R"("has":[false,false],"comparable":false)", "cut short",
          R"({"id":"dbg_img_GV.ppm","name":"GV",)", R"("has":[false,true],"comparable":false)",
          R"("codes":["blend","horizontal","vertical"])", R"~({"id":"out.ppm (other)")~",
          "the two differ in size", R"({"verdict":"equal"})",
          R"({"verdict":"differs","differing":1,"largest":2,"first":[2,1],"kinds":[]})",
          R"("differing":4,"largest":16,"first":[3,0],"kinds":["bit 4 is set in B"]})",
          R"("least":0,"most":2,"histogram":[[3,0)"})
        CHECK_MESSAGE(contains(page, part), part);
    CHECK(page.find("dbg_img_GV") < page.find("dbg_img_DirInfo"));
    CHECK(matches_in(page, "(</script)").size() == 1);
    CHECK(matches_in(page, "\"(\\d-[abd]-\\d-\\d-\\d)\":") ==
          std::set<std::string>{"0-a-0-0-0", "2-b-0-0-0", "3-a-0-0-0", "3-b-0-0-0", "4-a-0-0-0", "5-b-0-0-0",
                                "6-a-0-0-0", "6-b-0-0-0"});
    CHECK(contains(get("one.html"), R"("title":"a")"));
    put("size/raw.ppm", picture("P5 2 2 4095", {1, 2, 3, 4}));
    check({{"report a size -o size", 0, "; input differs: raw in size or depth"},
           {"crop a size -o x", 2, "size mismatch: a/raw.ppm is 4x2"}});
    put("wide/raw.ppm", "P5\n4000 3001\n255\n" + std::string(4000 * 3001, 'x'));
    put("wide/tiles/keep.js", "");
    put("wide/tiles/9-a-0-0-0.js", "of an earlier page");
    check({{"report wide -o wide.html", 2, "wide.html: too many samples for one file: name a folder"},
           {"report wide -o wide", 0, "wide/index.html: 1 planes"}});
    // 256 x 256 samples of 120 in blocks of 64: the first 64 in 7 bits each, low bits first; further ones
    // differ by nothing.
    std::string expected = "cfaTile('0-a-0-0-0','\x07";
    for (int i = 0; i < 8; ++i)
        expected += "\x78\x3c\x1e\x8f\xc7\xe3\xf1";
    const std::string tile = get("wide/tiles/0-a-0-0-0.js");
    CHECK(tile == expected + std::string(1023, '\x80') + "')\n");
    CHECK(get("wide/tiles/keep.js").empty());
    CHECK(run_program({"/bin/ls", *this / "wide/tiles/9-a-0-0-0.js"}).status != 0);
}
