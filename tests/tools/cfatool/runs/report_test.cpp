#include <doctest/doctest.h>
#include <filesystem>
#include <regex>
#include <set>

#include "tests/tools/cfatool/tool_support.h"
#include "tools/cfatool/pictures/png_file.h"

using namespace cfatool;
namespace fs = std::filesystem;

namespace {

/// Everything that the page refers to.
std::vector<std::string> links_of(const std::string &page) {
    const std::regex link("(?:href|src)=\"([^\"]*)\"");
    std::vector<std::string> links;
    for (std::sregex_iterator match(page.begin(), page.end(), link), end; match != end; ++match)
        links.push_back((*match)[1]);
    return links;
}

std::set<std::string> files_below(const std::string &folder) {
    std::set<std::string> files;
    for (const auto &entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file())
            files.insert(fs::relative(entry.path(), folder));
    return files;
}

} // namespace

TEST_CASE("the page of a golden run: its links are its files, all within its folder") {
    const TempFolder folder;
    const std::string run = source_root() + "/tests/data/golden/everything_on_scene_id2";
    REQUIRE(cfatool_run({"report", run, "-o", folder / "page"}).status == 0);
    const std::string page = read_file(folder / "page/index.html");
    std::set<std::string> linked = {"index.html"};
    for (const std::string &link : links_of(page))
        linked.insert(link);
    CHECK(linked == files_below(folder / "page"));
    CHECK(linked.size() == 1 + 38);
    for (const char *foreign : {"http:", "https:", "@import", "url("})
        CHECK_FALSE(contains(page, foreign));

    // In pipeline order, with captions, and at full size.
    CHECK(page.find("raw.png") < page.find("dbg_img_GH.png"));
    CHECK(page.find("dbg_img_YMoire.png") < page.find("out_sg.png"));
    CHECK(contains(page, "direction of interpolation: 0 blend, 1 horizontal, 2 vertical; 0..2"));
    const RgbPicture out = read_png(folder / "page/images/out.png");
    CHECK((out.width == 64 && out.height == 48));

    // Registers that differ, and only those; a call that makes the run again.
    CHECK(contains(page, "<td>reg_cfa_shpn_gain_value</td><td class=\"n\">0</td><td class=\"n\">40</td>"));
    CHECK_FALSE(contains(page, "<td>reg_cfa_vw_thd</td>"));
    CHECK(contains(page, "cfa_cmodel cfa.ini run.log 0 1 dbg cmodel_top.ini raw.ppm out.ppm"));
}

TEST_CASE("large pictures get thumbnails; strange names and a recorded call are escaped") {
    const TempFolder folder;
    const std::string run = folder / "run", page_folder = folder / "page";
    fs::create_directory(run);
    const std::string name = "a <b> & 100%#?.ppm";
    write_file(run + "/" + name, "P5\n600 300\n255\n" + std::string(600 * 300, '\x40'));
    write_file(run + "/empty.ppm", "P5\n0 0\n255\n");
    write_file(run + "/call.txt", "cfa_cmodel <x> & y\n");
    REQUIRE(cfatool_run({"report", run, "-o", page_folder}).status == 0);
    const std::string page = read_file(page_folder + "/index.html");
    CHECK(contains(page, "<pre>cfa_cmodel &lt;x&gt; &amp; y\n</pre>"));
    CHECK(links_of(page) == std::vector<std::string>{"images/a%20%3Cb%3E%20%26%20100%25%23%3F.png",
                                                     "thumbs/a%20%3Cb%3E%20%26%20100%25%23%3F.png"});
    const RgbPicture thumbnail = read_png(page_folder + "/thumbs/a <b> & 100%#?.png");
    CHECK((thumbnail.width == 200 && thumbnail.height == 100)); // every third pixel and row
    CHECK(thumbnail.samples[3 * 200 * 50] == 0x40);
    CHECK(read_png(page_folder + "/images/a <b> & 100%#?.png").width == 600);

    write_file(run + "/" + name, "P5\n600 300\n255\nshort");
    CHECK(cfatool_run({"report", run, "-o", page_folder}).status == 2);
    CHECK(cfatool_run({"report", folder / "none", "-o", page_folder}).status == 2);
    CHECK(cfatool_run({"report", run}).status == 2);
}
