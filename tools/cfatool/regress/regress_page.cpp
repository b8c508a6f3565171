#include "tools/cfatool/regress/regress_page.h"

#include <filesystem>
#include <fmt/core.h>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/html.h"

namespace cfatool {
namespace {

constexpr size_t MOST_ROWS = 200; // of a bucket

constexpr const char *HEAD = R"(<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><meta name="viewport" content="width=device-width">
<title>Regression</title><style>
:root { color-scheme: light dark; --back: light-dark(#f3f4f7, #14161a); --panel: light-dark(#fff, #1c1f25);
  --line: light-dark(#dfe3e9, #31363f); --text: light-dark(#1b2028, #e5e8ed); --faint: light-dark(#626c7a, #97a1b0);
  --accent: light-dark(#1f6feb, #5ba3ff); --wrong: light-dark(#c22f17, #ff8469); --good: light-dark(#26734a, #63c28d);
  font: 14px/1.5 system-ui; font-variant-numeric: tabular-nums; background: var(--back); color: var(--text); }
body { max-width: 1180px; margin: 0 auto; padding: 16px; }
section { background: var(--panel); border: 1px solid var(--line); border-radius: 8px; padding: 4px 16px 12px; margin: 16px 0; }
h1 { font-size: 1.4em; } h2 { font-size: 1.1em; } small, .faint { color: var(--faint); } a { color: var(--accent); }
.counts { display: flex; flex-wrap: wrap; gap: 8px 32px; } .counts b { display: block; font-size: 1.6em; }
.wrong { color: var(--wrong); } .good { color: var(--good); }
.bar { display: flex; height: 8px; border-radius: 4px; overflow: hidden; margin: 12px 0; background: var(--line); }
.bar i { background: var(--good); } .bar i.wrong { background: var(--wrong); } .bar i.error { background: var(--text); }
table { width: 100%; border-collapse: collapse; } td { border-top: 1px solid var(--line); padding: 4px 16px 4px 0;
  vertical-align: top; overflow-wrap: anywhere; } td:first-child { width: 30%; }
</style></head><body>
)";

std::string attribute(const std::string &text) {
    std::string clean;
    for (const char c : text) // what XML cannot carry
        clean += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
    return html_text(clean);
}

std::string count_text(const char *what, uint64_t count, const char *look) {
    return fmt::format("<div class=\"{}\"><b>{}</b>{}</div>\n", count > 0 ? look : "faint", count, what);
}

std::string counts_section(const CaseCounts &c, const Merged &merged) {
    const auto all = static_cast<double>(std::max<uint64_t>(1, c.pass + c.fail + c.error + c.not_run));
    const auto part = [all](const char *look, uint64_t count) {
        return fmt::format("<i class=\"{}\" style=\"width:{:.3f}%\"></i>", look,
                           100.0 * static_cast<double>(count) / all);
    };
    std::string text = "<section><h1>Regression</h1><div class=\"counts\">\n" +
                       count_text("fail", c.fail, "wrong") + count_text("error", c.error, "wrong") +
                       count_text("not run", c.not_run, "") + count_text("pass", c.pass, "good") +
                       "</div><div class=\"bar\">" + part("wrong", c.fail) + part("error", c.error) +
                       part("good", c.pass) + "</div><small>" + counts_text(c) +
                       fmt::format(", {:.0f} s of work", merged.seconds());
    if (merged.foreign() > 0)
        text += fmt::format("; {} results of cases that are not in the plan", merged.foreign());
    return text + "</small></section>\n";
}

class Rows {
  public:
    Rows(const std::string &results, const std::string &page)
        : results_(results),
          link_(std::filesystem::proximate(results, std::filesystem::absolute(page).parent_path())) {}

    std::string row(const Result &result) const {
        std::string name = html_text(result.name);
        if (!result.kept.empty())
            name = link(result.kept, name);
        std::string text = html_text(result.text);
        for (const auto &[file, called] : {std::pair{"/page/index.html", "page"},
                                           {"/difference.txt", "difference"},
                                           {"/least", "least case"}})
            if (!result.kept.empty() && std::filesystem::exists(results_ + "/" + result.kept + file))
                text += " " + link(result.kept + file, called);
        return "<tr><td>" + name + "</td><td>" + text + "</td></tr>\n";
    }

  private:
    std::string link(const std::string &path, const std::string &text) const {
        return "<a href=\"" + link_text((link_ / path).lexically_normal().string()) + "\">" + text + "</a>";
    }

    std::string results_;
    std::filesystem::path link_;
};

std::string table(const std::vector<size_t> &cases, const Merged &merged, const Rows &rows) {
    std::string text = "<table>\n";
    size_t shown = 0;
    for (const bool kept : {true, false}) // those that one can look at come first
        for (const size_t index : cases)
            if (merged.bad(index)->kept.empty() != kept && shown++ < MOST_ROWS)
                text += rows.row(*merged.bad(index));
    if (shown > MOST_ROWS)
        text += fmt::format("<tr><td class=\"faint\">and {} more</td><td></td></tr>\n", shown - MOST_ROWS);
    return text + "</table>";
}

} // namespace

void write_junit(const Plan &plan, const Merged &merged, const std::string &path) {
    const CaseCounts counts = merged.counts();
    OutputFile file(path);
    file.write(fmt::format(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuite name=\"cfatool regress\" tests=\"{}\" "
        "failures=\"{}\" errors=\"{}\" skipped=\"{}\" time=\"{:.3f}\">\n",
        plan.size(), counts.fail, counts.error, counts.not_run, merged.seconds()));
    for (size_t i = 0; i < plan.size(); ++i) {
        const std::string name(plan.name(i));
        const Result *const bad = merged.bad(i);
        std::string text = "<testcase classname=\"" + attribute(name.substr(0, name.find('/'))) +
                           "\" name=\"" + attribute(name) + "\"";
        if (bad != nullptr && bad->status == Result::Status::fail)
            text += "><failure message=\"" + attribute(bad->stage + ": " + bad->kind) + "\">" +
                    attribute(bad->text) + "</failure></testcase>\n";
        else if (bad != nullptr)
            text += "><error message=\"" + attribute(bad->text) + "\"/></testcase>\n";
        else
            text += merged.was_run(i) ? "/>\n" : "><skipped message=\"not run\"/></testcase>\n";
        file.write(text);
    }
    file.write("</testsuite>\n");
    file.commit();
}

void write_page(const Plan &plan, const Merged &merged, const std::string &results, const std::string &path) {
    const CaseCounts counts = merged.counts();
    const Rows rows(results, path);
    std::string page = HEAD + counts_section(counts, merged);
    for (const Merged::Bucket &bucket : merged.buckets())
        page += fmt::format("<section><h2 class=\"wrong\">{} <small>{}</small></h2>", html_text(bucket.name),
                            cases_text(bucket.cases.size())) +
                table(bucket.cases, merged, rows) + "</section>\n";
    if (counts.all_pass())
        page += fmt::format("<section><p class=\"good\">All {} cases pass.</p></section>\n", plan.size());
    write_whole_file(path, page + "</body></html>\n");
}

} // namespace cfatool
