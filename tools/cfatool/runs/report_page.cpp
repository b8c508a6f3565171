// HTML of a report: one page, its style and its script in it.
#include "tools/cfatool/runs/report_page.h"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include "tools/cfatool/base/json_text.h"

namespace cfatool {
namespace {

// Samples of a run that the page carries; about 16 MB of text.
constexpr uint64_t MOST_SAMPLES = 6'000'000;

constexpr const char *STYLE = R"(
body { font: 14px/1.45 sans-serif; margin: 2em auto; max-width: 1180px; padding: 0 1em; color: #222; }
h1 { font-size: 1.5em; } h2 { font-size: 1.15em; margin-top: 2em; }
pre { background: #f2f3f5; padding: .8em; overflow-x: auto; }
table { border-collapse: collapse; } th, td { text-align: left; padding: .2em 1.2em .2em 0; }
td { border-top: 1px solid #ddd; } td.n, th.n { text-align: right; font-variant-numeric: tabular-nums; }
main { display: grid; grid-template-columns: repeat(auto-fill, minmax(256px, 1fr)); gap: 1.6em 1.2em; }
figure { margin: 0; } figure img { width: 100%; image-rendering: pixelated; background: #ddd; cursor: crosshair; }
figcaption b { overflow-wrap: anywhere; } figcaption .stage { color: #666; }
figcaption output { display: block; min-height: 1.45em; color: #a02020; font-variant-numeric: tabular-nums; }
#where { position: sticky; top: 0; background: #fff; padding: .5em 0; border-bottom: 1px solid #ddd; z-index: 1; }
)";

// Shows, for the pixel under the pointer, the samples of every image that has as many pixels.
constexpr const char *SCRIPT = R"(
const bytes = {};
for (const image of images)
  if (image.data) bytes[image.id] = Uint8Array.from(atob(image.data), c => c.charCodeAt(0));
function valueOf(image, x, y) {
  const data = bytes[image.id], values = [];
  if (!data || x >= image.width || y >= image.height) return '';
  for (let c = 0; c < image.channels; ++c) {
    let v = 0;
    const at = ((y * image.width + x) * image.channels + c) * image.bytes;
    for (let i = 0; i < image.bytes; ++i) v = v * 256 + data[at + i];
    values.push(v);
  }
  return values.join(' / ');
}
document.querySelectorAll('figure img').forEach(img => img.addEventListener('mousemove', event => {
  const image = images[img.dataset.id], box = img.getBoundingClientRect();
  const at = (p, length, n) => Math.max(0, Math.min(n - 1, Math.floor(p / length * n)));
  const x = at(event.clientX - box.left, box.width, image.width), y = at(event.clientY - box.top, box.height, image.height);
  document.getElementById('where').textContent =
    'Pixel ' + x + ',' + y + (image.data ? '' : ': cfatool probe ' + folder + ' ' + x + ',' + y);
  for (const other of images) document.getElementById('value' + other.id).textContent = valueOf(other, x, y);
}));
)";

/// A relative path as a link.
std::string link_text(const std::string &path) {
    std::string link;
    for (const char c : path) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                           c == '_' || c == '-' || c == '.' || c == '/';
        link += plain ? std::string(1, c) : fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
    return link;
}

std::string register_table(const Report &report) {
    if (report.register_files.empty())
        return "<p>The run folder holds no cfa.ini and no cmodel_top.ini.</p>\n";
    std::string files;
    for (const std::string &file : report.register_files)
        files += (files.empty() ? "" : ", ") + html_text(file);
    if (report.registers.empty())
        return "<p>None (" + files + ").</p>\n";
    std::string table = fmt::format(R"(<p>From {}.</p>
<table>
<tr><th>register</th><th class="n">default</th><th class="n">value</th><th>meaning</th></tr>
)",
                                    files);
    for (const ReportRegister &r : report.registers)
        table += fmt::format(R"(<tr><td>{}</td><td class="n">{}</td><td class="n">{}</td><td>{}</td></tr>)"
                             "\n",
                             html_text(r.key), r.reset, r.value, html_text(r.meaning));
    return table + "</table>\n";
}

std::string figure(const ReportImage &image, size_t id) {
    const RunImage *known = image.image.known;
    const std::string name = html_text(image.image.name);
    std::string text = "<figure>";
    if (image.full.empty())
        text += "<p>A picture of no pixels.</p>";
    else
        text += fmt::format(R"(<a href="{}"><img src="{}" alt="{}" data-id="{}"></a>)", link_text(image.full),
                            link_text(image.thumbnail), name, id);
    text += fmt::format("<figcaption><b>{}</b>", name);
    if (known != nullptr)
        text += fmt::format(R"( <span class="stage">{}</span><br>{}; {})", html_text(known->stage),
                            html_text(known->shows), html_text(known->range));
    text += fmt::format("<br>{} x {}, samples {}..{} of 0..{}", image.info.width, image.info.height,
                        image.least, image.most, image.info.max);
    if (image.gain > 1)
        text += fmt::format(", brightened {} times", image.gain);
    return text + fmt::format("<output id=\"value{}\"></output></figcaption></figure>\n", id);
}

/// Whether the page carries the samples.
bool carries_samples(const Report &report) {
    uint64_t samples = 0;
    for (const ReportImage &image : report.images)
        samples += image.samples();
    return samples <= MOST_SAMPLES;
}

/// What the script knows of the images.
std::string script_data(const Report &report) {
    const bool with_samples = carries_samples(report);
    Json images = Json::array();
    for (size_t id = 0; id < report.images.size(); ++id) {
        const ReportImage &image = report.images[id];
        images.push_back({{"id", id},
                          {"width", image.info.width},
                          {"height", image.info.height},
                          {"channels", image.info.channels},
                          {"bytes", image.most > 65535 ? 4 : 2},
                          {"data", with_samples ? samples_base64(image) : ""}});
    }
    std::string folder = json_text(report.folder); // no "</script>" may stand in a script
    for (size_t at = 0; (at = folder.find('<', at)) != std::string::npos;)
        folder.replace(at, 1, "\\u003c");
    return fmt::format("const folder = {};\nconst images = {};\n", folder, json_text(images));
}

} // namespace

std::string html_text(const std::string &text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

std::string report_page(const Report &report) {
    const std::string title = "Run " + html_text(report.folder);
    std::string page = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>" +
                       title + "</title>\n<style>" + STYLE + "</style>\n</head>\n<body>\n<h1>" + title +
                       "</h1>\n<h2>Call</h2>\n";
    if (!report.call_is_recorded)
        page += "<p>No call.txt was kept with the run. From inside its folder this makes it again:</p>\n";
    page +=
        "<pre>" + html_text(report.call) + "</pre>\n<h2>Registers that differ from their defaults</h2>\n" +
        register_table(report) + "<h2>Images in pipeline order</h2>\n" +
        "<p id=\"where\">Point at a picture to see " +
        (carries_samples(report) ? "the samples of every image at that pixel"
                                 : "the position and the command that prints every image's samples there") +
        "; click to open it at full size.</p>\n<main>\n";
    for (size_t id = 0; id < report.images.size(); ++id)
        page += figure(report.images[id], id);
    return page + "</main>\n<script>\n" + script_data(report) + SCRIPT + "</script>\n</body>\n</html>\n";
}

} // namespace cfatool
