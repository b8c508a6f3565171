// cfatool report: a page about one run or two that opens from a file.
#include <atomic>
#include <filesystem>
#include <fmt/core.h>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <openssl/evp.h>
#include <regex>
#include <thread>

#include "tools/cfatool/base/progress.h"
#include "tools/cfatool/page/page_runs.h"
#include "tools/cfatool/page/report.h"
#include "tools/cfatool/page/tile_code.h"
#include "tools/cfatool/subcommands.h"

namespace cfatool {
namespace {

namespace fs = std::filesystem;

// Samples of runs that fit into one file, about 20 MB of text.
constexpr uint64_t MOST_SAMPLES = 12'000'000;

struct ReportOptions {
    std::string run, other;
    std::string output;
};

std::string base64(const std::string &bytes) {
    std::string text((bytes.size() + 2) / 3 * 4, '\0');
    EVP_EncodeBlock(reinterpret_cast<uint8_t *>(text.data()), reinterpret_cast<const uint8_t *>(bytes.data()),
                    static_cast<int>(bytes.size()));
    return text;
}

/// Takes the tiles of a plane: scripts in a folder, or texts.
class TileWriter {
  public:
    /// An empty folder: into texts.
    explicit TileWriter(std::string folder) : folder_(std::move(folder)) {}

    void take(const std::string &key, const std::string &bytes) {
        if (folder_.empty()) {
            texts_[key] = base64(bytes);
            return;
        }
        const std::string path = folder_ + "/" + key + ".js";
        const std::string text = "cfaTile('" + key + "','" + script_text(bytes) + "')\n";
        const Stream file(std::fopen(path.c_str(), "wb"), &std::fclose);
        if (!file || std::fwrite(text.data(), 1, text.size(), file.get()) != text.size() ||
            std::fflush(file.get()) != 0)
            throw errno_trouble(path);
    }
    const std::map<std::string, std::string> &texts() const { return texts_; }

  private:
    std::string folder_;
    std::map<std::string, std::string> texts_;
};

/// All tiles of one side of a plane; of a difference those that the page cannot compute itself.
PlaneSummary write_tiles(const PlaneSamples &plane, const std::string &prefix, bool whole,
                         TileWriter &writer) {
    const Pyramid pyramid = make_pyramid(plane);
    const auto each = [&](int level, int width, int height, const auto &tile) {
        for (int row = 0; row < tiles_along(height); ++row)
            for (int column = 0; column < tiles_along(width); ++column)
                writer.take(fmt::format("{}-{}-{}-{}", prefix, level, column, row), tile(column, row));
    };
    if (whole)
        each(0, plane.width, plane.height,
             [&](int column, int row) { return plane_tile(plane, column, row); });
    for (int level = 1; level <= static_cast<int>(pyramid.levels.size()); ++level) {
        const PyramidLevel &cells = pyramid.levels[static_cast<size_t>(level) - 1];
        each(level, cells.width, cells.height,
             [&](int column, int row) { return level_tile(pyramid, level, column, row); });
    }
    return pyramid.summary;
}

/// Every plane in turn, by as many threads as the machine has.
class Report {
  public:
    Report(const PageRuns &runs, const Json &verdict, const std::string &folder)
        : runs_(runs), verdict_(verdict), folder_(folder), summaries_(runs.planes().size()),
          progress_(total(), "writing") {}

    void run() {
        std::vector<std::thread> threads;
        for (unsigned i = 0; i < std::max(1u, std::thread::hardware_concurrency()); ++i)
            threads.emplace_back([this] { work(); });
        for (std::thread &thread : threads)
            thread.join();
        if (trouble_)
            std::rethrow_exception(trouble_);
    }
    const std::vector<Json> &summaries() const { return summaries_; }
    const std::map<std::string, std::string> &texts() const { return texts_; }

  private:
    uint64_t total() const {
        uint64_t sum = 0;
        for (const PagePlane &plane : runs_.planes())
            sum += plane.samples();
        return sum;
    }

    void work() {
        TileWriter writer(folder_);
        try {
            for (size_t i; (i = next_++) < runs_.planes().size();) {
                summaries_[i] = Json::object();
                write_plane(i, writer);
                progress_.add(runs_.planes()[i].samples());
            }
        } catch (...) {
            const std::lock_guard lock(mutex_);
            trouble_ = std::current_exception();
            next_ = runs_.planes().size();
        }
        const std::lock_guard lock(mutex_);
        texts_.insert(writer.texts().begin(), writer.texts().end());
    }

    void write_plane(size_t i, TileWriter &writer) {
        const PagePlane &plane = runs_.planes()[i];
        const bool equal = runs_.two() && verdict_["planes"][i]["verdict"] == "equal";
        for (const auto &[side, letter] :
             {std::pair(Side::a, 'a'), {Side::b, 'b'}, {Side::difference, 'd'}}) {
            if (!plane.has(side) || (equal && side == Side::b))
                continue;
            const PlaneSamples samples = read_side(plane, side);
            const PlaneSummary summary =
                write_tiles(samples, fmt::format("{}-{}", i, letter), side != Side::difference, writer);
            summaries_[i][std::string(1, letter)] = summary_json(summary, samples.channels);
        }
    }

    const PageRuns &runs_;
    const Json &verdict_;
    const std::string folder_;
    std::vector<Json> summaries_;
    std::map<std::string, std::string> texts_;
    std::atomic<size_t> next_ = 0;
    std::mutex mutex_;
    std::exception_ptr trouble_;
    Progress progress_;
};

void make_folder(const std::string &folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error)
        throw file_trouble(folder, error.message());
}

/// An empty folder for tiles: those of an earlier page go.
std::string tile_folder(const std::string &output) {
    std::string folder = output + "/tiles";
    make_folder(folder);
    const std::regex tile("[0-9]+-[abd]-[0-9]+-[0-9]+-[0-9]+\\.js");
    for (const auto &entry : fs::directory_iterator(folder))
        if (std::regex_match(entry.path().filename().string(), tile))
            fs::remove(entry.path());
    return folder;
}

void run(const ReportOptions &options) {
    std::cout << write_report(options.run, options.other, options.output) << "\n";
}

} // namespace

std::string write_report(const std::string &run, const std::string &other, const std::string &output) {
    const PageRuns runs(run, other);
    uint64_t samples = 0;
    for (const PagePlane &plane : runs.planes())
        samples += plane.samples();
    const bool one_file = samples <= MOST_SAMPLES, named = output.ends_with(".html");
    if (named && !one_file)
        throw file_trouble(output, "too many samples for one file: name a folder");
    if (!named)
        make_folder(output);
    const std::string page = named ? output : output + "/index.html";
    const Json verdict = runs.two() ? runs.verdict() : Json();
    Report report(runs, verdict, one_file ? "" : tile_folder(output));
    report.run();
    Json manifest = runs.manifest(one_file ? "page" : "scripts");
    manifest["verdict"] = verdict;
    manifest["summaries"] = report.summaries();
    write_whole_file(page, page_text(manifest, one_file ? json_text(Json(report.texts())) : ""));
    return fmt::format("{}: {} planes and images{}", page, runs.planes().size(),
                       runs.two() ? "; " + verdict["headline"].get<std::string>() : "");
}

void report_command(Command &command) {
    const auto options = std::make_shared<ReportOptions>();
    command.word("RUN", options->run, "Folder of the run");
    command.word("OTHER", options->other, "Folder of a run to compare it with", Need::optional);
    command.text("-o", options->output, "DIR",
                 "Folder for the page, made if it is not there; or FILE.html for a small run",
                 Need::required);
    command.footer(
        "Examples: cfatool report run/ -o page/\n"
        "          cfatool report run/ rtl_run/ -o difference.html\n"
        "Open index.html in a browser; it needs no network. Up to 12 million samples are in that one file,\n"
        "more of them in tiles/ beside it. cfatool view shows the same page at once, for any size.");
    command.run(options, run);
}

} // namespace cfatool
