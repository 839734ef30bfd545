// Shapes of a picture. Tested by tests/unit/host/trace_view_test.cpp.
#include "host/trace_view/svg_writer.h"

#include "host/text/markup.h"
#include "host/text/printable.h"

namespace host {
namespace {

// The first so many characters.
std::string_view Cut(std::string_view text, size_t most) {
    size_t size = 0;
    for (size_t count = 0; count < most && size < text.size(); ++count) {
        size += FirstCharacter(text.substr(size)).length;
    }
    return text.substr(0, size);
}

std::string Attribute(const char* name, int value) {
    return std::string(" ") + name + "=\"" + std::to_string(value) + "\"";
}

std::string Attribute(const char* name, const char* value) {
    return std::string(" ") + name + "=\"" + value + "\"";
}

std::string Title(std::string_view title) {
    return title.empty() ? std::string() : "<title>" + EscapedMarkup(title) + "</title>";
}

}  // namespace

void SvgWriter::Bar(const Box& box, const char* colour, std::string_view title) {
    body_ += "<rect" + Attribute("x", box.x) + Attribute("y", box.y) +
             Attribute("width", box.width) + Attribute("height", box.height) +
             Attribute("fill", colour) + ">" + Title(title) + "</rect>\n";
}

void SvgWriter::Line(int x1, int y1, int x2, int y2, const char* colour) {
    body_ += "<line" + Attribute("x1", x1) + Attribute("y1", y1) + Attribute("x2", x2) +
             Attribute("y2", y2) + Attribute("stroke", colour) + "/>\n";
}

void SvgWriter::Arrow(int fromX, int toX, int y, const char* colour) {
    constexpr int kHead = 6;
    const int back = toX > fromX ? toX - kHead : toX + kHead;
    Line(fromX, y, toX, y, colour);
    Line(back, y - kHead / 2, toX, y, colour);
    Line(back, y + kHead / 2, toX, y, colour);
}

void SvgWriter::Text(int x, int y, std::string_view text, size_t most, const char* colour,
                     const char* anchor, const char* style) {
    const std::string_view cut = Cut(text, most);
    const bool whole = cut.size() == text.size();
    body_ += "<text" + Attribute("x", x) + Attribute("y", y) + Attribute("fill", colour) +
             Attribute("text-anchor", anchor) + (*style == '\0' ? "" : Attribute("style", style)) +
             ">" + EscapedMarkup(cut) + (whole ? "" : "\xE2\x80\xA6" + Title(text)) + "</text>\n";
}

std::string SvgWriter::Document(int width, int height) const {
    const std::string size = Attribute("width", width) + Attribute("height", height);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<svg xmlns=\"http://www.w3.org/2000/svg\"" +
           size + " font-family=\"monospace\" font-size=\"12\">\n<rect" + size +
           " fill=\"#fff\"/>\n" + body_ + "</svg>\n";
}

}  // namespace host
