#pragma once
// Small pieces every command of quorlen-cli that talks to a box needs.

#include "core/text.h"
#include "image/settings_image.h"

#include <QCoreApplication>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace quorlen::cli {

// QSerialPort wants an application object for its notifiers; the tool has none of its own.
class Core_Application {
public:
    Core_Application() {
        if (QCoreApplication::instance() == nullptr) app_ = std::make_unique<QCoreApplication>(argc_, argv_);
    }

private:
    static inline char name_[] = "quorlen-cli";
    static inline char* argv_[] = {name_, nullptr};
    static inline int argc_ = 1;
    std::unique_ptr<QCoreApplication> app_;
};

// The value of the option args[i]: "--name=VALUE" (then `name` loses "=VALUE") or
// "--name VALUE" (then `i` moves on to the value). Empty when none is given.
inline std::string Take_Option_Value(const std::vector<std::string>& args, std::size_t& i,
                                     std::string& name) {
    if (auto eq = name.find('='); eq != std::string::npos) {
        std::string value = name.substr(eq + 1);
        name.resize(eq);
        return value;
    }
    return i + 1 < args.size() ? args[++i] : std::string();
}

// A multi-line text of the program (CR LF, blank lines between) as printed lines.
inline std::string Lines_Of(const std::string& text) {
    std::string lines;
    for (const std::string& line : Split_Lines(text))
        if (!line.empty()) lines += line + "\n";
    return lines;
}

// The save rules put the program's dataset into byte 255: settings of another dataset are
// told so before they are saved, as the window would have asked.
inline void Note_Dataset(const Settings_Image& image, std::FILE* err) {
    if (image.CardByte[255] != image.DatasetID)
        std::fprintf(err, "dataset ID %d is saved as %d, the program's dataset\n", image.CardByte[255],
                     image.DatasetID);
}

} // namespace quorlen::cli
