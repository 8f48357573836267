#include "viewport/gallery/IndexPage.h"

#include <filesystem>
#include <fstream>
#include <system_error>

namespace vellum::gallery {

namespace {

namespace fs = std::filesystem;
using viewport::Fault;

constexpr char PAGE_HEAD[] = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>vl_raster_gl: gallery</title>
<style>
  body { margin: 0; background: #171b21; color: #dfe3ea; font: 16px/1.5 system-ui, sans-serif; }
  main { max-width: 1360px; margin: 0 auto; padding: 40px 24px 64px; }
  h1 { margin: 0 0 4px; font-weight: 600; }
  h2 { margin: 48px 0 16px; font-weight: 600; border-bottom: 1px solid #333b47; padding-bottom: 6px; }
  p { margin: 0; color: #a5afbd; }
  .pictures { display: grid; gap: 28px; grid-template-columns: repeat(auto-fill, minmax(min(100%, 560px), 1fr)); }
  figure { margin: 0; }
  img { display: block; width: 100%; height: auto; border-radius: 6px; border: 1px solid #333b47; box-sizing: border-box; }
  figcaption { margin-top: 8px; color: #a5afbd; }
  figcaption b { color: #dfe3ea; }
</style>
</head>
<body>
<main>
<h1>vl_raster_gl</h1>
<p>Drawings of the render layer, each made by the program that wrote this page. A click shows a picture in full size.</p>
)";

constexpr char PAGE_FOOT[] = "</main>\n</body>\n</html>\n";

std::string escaped(std::string const& text) {
    std::string result;
    for (char character : text) {
        switch (character) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            result += character;
        }
    }
    return result;
}

void writeExhibit(std::ostream& page, Exhibit const& exhibit) {
    std::string const file = escaped(exhibit.file);
    std::string const title = escaped(exhibit.title);
    page << "<figure><a href=\"" << file << "\"><img src=\"" << file << "\" alt=\"" << title
         << "\" loading=\"lazy\"></a>\n<figcaption><b>" << title << ".</b> " << escaped(exhibit.caption)
         << "</figcaption></figure>\n";
}

void writePage(std::ostream& page, std::vector<Exhibit> const& exhibits) {
    page << PAGE_HEAD;
    std::string section;
    for (Exhibit const& exhibit : exhibits) {
        if (exhibit.section != section) {
            page << (section.empty() ? "" : "</div>\n") << "<h2>" << escaped(exhibit.section)
                 << "</h2>\n<div class=\"pictures\">\n";
            section = exhibit.section;
        }
        writeExhibit(page, exhibit);
    }
    page << (section.empty() ? "" : "</div>\n") << PAGE_FOOT;
}

}  // namespace

std::optional<Fault> writeIndexPage(std::string const& folder, std::vector<Exhibit> const& exhibits) {
    // A temporary name until the page is complete.
    fs::path const path = fs::path(folder) / "index.html";
    fs::path const unfinished = fs::path(folder) / ".index.html.tmp";
    {
        std::ofstream page(unfinished, std::ios::trunc);
        writePage(page, exhibits);
        page.close();
        if (!page) {
            std::error_code ignored;
            fs::remove(unfinished, ignored);
            return Fault{path.string(), "cannot be written"};
        }
    }
    std::error_code error;
    fs::rename(unfinished, path, error);
    if (error) {
        std::error_code ignored;
        fs::remove(unfinished, ignored);
        return Fault{path.string(), error.message()};
    }
    return std::nullopt;
}

}  // namespace vellum::gallery
