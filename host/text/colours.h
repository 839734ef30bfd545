// Colours, for terminals only.
#ifndef PAGERFWD_HOST_TEXT_COLOURS_H
#define PAGERFWD_HOST_TEXT_COLOURS_H

#include <string>
#include <string_view>

namespace host {

class Colours {
 public:
    explicit Colours(bool on) : on_(on) {}

    // On where the descriptor is a terminal that knows them, and NO_COLOR isn't set.
    static Colours For(int descriptor);

    bool On() const { return on_; }

    std::string Bold(std::string_view text) const { return In("1", text); }
    std::string Dim(std::string_view text) const { return In("2", text); }
    std::string Red(std::string_view text) const { return In("31", text); }
    std::string Green(std::string_view text) const { return In("32", text); }
    std::string Yellow(std::string_view text) const { return In("33", text); }
    std::string Cyan(std::string_view text) const { return In("36", text); }

 private:
    std::string In(const char* code, std::string_view text) const;

    bool on_;
};

}  // namespace host

#endif
