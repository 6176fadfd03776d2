// Texture list files: the input is the list. Its lines name files of the private folder,
// where a small image waits under "a.png": each line that is not blank gets the folder in
// front, and an input with a "/" of its own is skipped, so that the fuzzer reads nothing
// else on the machine.
#include "FuzzFiles.h"

#include "OpenGL/Texture2DArray.h"

#include <QImage>

#include <algorithm>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    static bool ready = [] {
        QImage image(3, 2, QImage::Format_RGB32);
        image.fill(qRgb(10, 20, 30));
        return image.save(QString::fromStdString(vel::fuzz::Folder() + "/a.png"));
    }();
    (void)ready;
    if (std::find(data, data + size, uint8_t('/')) != data + size)
        return 0;
    std::string text;
    bool lineStart = true;
    for (size_t i = 0; i < size; ++i) {
        char c = char(data[i]);
        if (lineStart && c != '\n' && c != '\r')
            text += vel::fuzz::Folder() + "/";
        text += c;
        lineStart = c == '\n';
    }
    std::string list = vel::fuzz::WriteInput("list.txt", reinterpret_cast<uint8_t const*>(text.data()), text.size());
    vel::Texture2DArray array;
    array.loadFiles(list);
    return 0;
}
