#pragma once
// Pictures of the windows for the documentation, taken by the tests: into QUORLEN_SCREENSHOTS
// when it names a folder, else into a folder of the test's own, so the pictures are taken and
// checked on every run.

#include "support/temp_dir.h"

#include <QImage>
#include <QString>

#include <cstdlib>

namespace quorlen::test {

class Picture_Folder {
public:
    QString Path() const {
        const char* wanted = std::getenv("QUORLEN_SCREENSHOTS");
        return wanted != nullptr ? QString(wanted) : QString::fromStdString(own_.Path().string());
    }

private:
    Temp_Dir own_;
};

// A window drawn, not an empty frame: more than its background colour.
inline bool Has_Content(const QImage& image) {
    if (image.isNull()) return false;
    const QRgb first = image.pixel(image.width() / 2, image.height() / 2);
    for (int y = 0; y < image.height(); y += 7)
        for (int x = 0; x < image.width(); x += 7)
            if (image.pixel(x, y) != first) return true;
    return false;
}

} // namespace quorlen::test
