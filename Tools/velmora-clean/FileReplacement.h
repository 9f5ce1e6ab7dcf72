#pragma once

#include "InputFile.h"

#include <string>
#include <string_view>

// A new content for a file, which takes the place of the old one in one step, or not at all.
//
// It is gathered in a temporary file beside the file, with the same rights, owner and extended attributes
// where the system grants them. Nothing is written until something differs. The temporary file goes when the
// replacement is given up, also by a signal that ends the program. One at a time.
class FileReplacement {
public:
    // `file`, open at its beginning, is the file at `path`.
    FileReplacement(const InputFile &file, std::string path);
    ~FileReplacement();
    FileReplacement(const FileReplacement &) = delete;
    FileReplacement &operator=(const FileReplacement &) = delete;

    // Why a file cannot be replaced: it is no regular file, a link, has several names or is protected. Empty
    // if it can. Never waits.
    static std::string obstacle(const std::string &path);

    // Appends what stands for the next `original.size()` bytes of the file.
    bool append(std::string_view original, std::string_view text, bool changed);

    // Puts the new content in place, if it differs.
    bool commit();

    // Why something could not be done; the file is as it was.
    const std::string &problem() const { return problem_; }

private:
    bool begin();
    bool copyUnchanged();
    void keepRights() const;
    void keepAttributes() const;
    bool isUntouched();
    bool write(std::string_view text);
    bool fail(std::string_view deed);

    const InputFile &file_;
    std::string path_;
    std::string folder_;
    struct stat status_ = {};   // As it was at the beginning.
    std::size_t unchanged_ = 0; // Bytes from the beginning that stay as they are.
    int descriptor_ = -1;
    std::string problem_;
};
