// The shapes of which a timeline is made.
#ifndef PAGERFWD_HOST_TRACE_VIEW_SVG_WRITER_H
#define PAGERFWD_HOST_TRACE_VIEW_SVG_WRITER_H

#include <string>
#include <string_view>

namespace host {

// Coordinates are pixels, from the top left. Texts are UTF-8 and fit for a terminal; they are
// escaped here.
class SvgWriter {
 public:
    struct Box {
        int x, y, width, height;
    };

    // title: shown when the pointer rests on it; empty for none.
    void Bar(const Box& box, const char* colour, std::string_view title);
    void Line(int x1, int y1, int x2, int y2, const char* colour);
    void Arrow(int fromX, int toX, int y, const char* colour);

    // anchor: "start", "middle" or "end". One that is longer than `most` characters is cut, and
    // whole in its title.
    void Text(int x, int y, std::string_view text, size_t most, const char* colour = "#222",
              const char* anchor = "start", const char* style = "");

    std::string Document(int width, int height) const;

 private:
    std::string body_;
};

}  // namespace host

#endif
