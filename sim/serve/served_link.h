// A symbolic link to where a line can be opened, which is gone with its owner.
#ifndef PAGERFWD_SIM_SERVE_SERVED_LINK_H
#define PAGERFWD_SIM_SERVE_SERVED_LINK_H

#include <string>

namespace pagersim {

// Errors     A link that can't be made throws std::system_error. Only links are replaced: another
//            file of this name is such an error.
class ServedLink {
 public:
    explicit ServedLink(std::string path) : path_(std::move(path)) {}
    ~ServedLink();
    ServedLink(const ServedLink&) = delete;
    ServedLink& operator=(const ServedLink&) = delete;

    const std::string& Path() const { return path_; }
    void PointTo(const std::string& target);
    void Remove();

 private:
    const std::string path_;
    bool made_ = false;
};

}  // namespace pagersim

#endif
