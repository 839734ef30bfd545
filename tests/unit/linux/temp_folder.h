// A folder of a test's own, gone with everything in it when the test ends.
#ifndef PAGERFWD_TESTS_UNIT_LINUX_TEMP_FOLDER_H
#define PAGERFWD_TESTS_UNIT_LINUX_TEMP_FOLDER_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

class TempFolder {
 public:
    TempFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "pagerfwd-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        path_ = name;
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::string operator/(const std::string& name) const { return (path_ / name).string(); }

 private:
    std::filesystem::path path_;
};

inline void WriteText(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

inline std::string ReadText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline bool Exists(const std::string& path) {
    return std::filesystem::exists(std::filesystem::symlink_status(path));
}

#endif
