// The user's own editor.
#ifndef PAGERFWD_HOST_CLI_TEXT_EDITOR_H
#define PAGERFWD_HOST_CLI_TEXT_EDITOR_H

#include <string>

namespace host {

// A text in a file of its own, for the editor that VISUAL or EDITOR names; vi without them. The
// file goes with the object, unless it is kept.
//
// Errors     Failure, where there is no such editor, or it fails.
class EditedText {
 public:
    explicit EditedText(const std::string& text);
    ~EditedText();
    EditedText(const EditedText&) = delete;
    EditedText& operator=(const EditedText&) = delete;

    // Runs the editor, and returns what the file holds then.
    std::string Edit() const;

    // Leaves the file behind, for what was typed not to be lost.
    const std::string& Keep();

 private:
    std::string path_;
    bool kept_ = false;
};

}  // namespace host

#endif
