#include "TestImages.h"

#include <stb_image_write.h>

#include <fstream>

namespace vel::test {

QRgb GifPalette(int i)
{
    static QRgb const colours[] = {qRgb(0, 0, 0), qRgb(255, 0, 0), qRgb(0, 255, 0), qRgb(0, 0, 255),
                                   qRgb(255, 255, 255)};
    return i >= 0 && i < 5 ? colours[i] : qRgb(0, 0, 0);
}

namespace {

// LSB-first bit packer for GIF's LZW codes, cut into sub-blocks of at most 255 bytes.
class CodeWriter {
public:
    void put(unsigned code, int width)
    {
        bits |= code << count;
        count += width;
        while (count >= 8) {
            bytes.push_back(char(bits & 0xFF));
            bits >>= 8;
            count -= 8;
        }
    }
    std::string finish()
    {
        if (count > 0)
            bytes.push_back(char(bits & 0xFF));
        std::string out;
        for (size_t at = 0; at < bytes.size(); at += 255) {
            size_t n = std::min<size_t>(255, bytes.size() - at);
            out += char(n);
            out.append(bytes, at, n);
        }
        out += char(0);
        return out;
    }

private:
    unsigned bits = 0;
    int count = 0;
    std::string bytes;
};

void Put16(std::string& s, int v)
{
    s += char(v & 0xFF);
    s += char((v >> 8) & 0xFF);
}

} // namespace

bool WriteAnimatedGif(std::string const& path, int width, int height, int frames, int delayCentiseconds)
{
    std::string gif = "GIF89a";
    Put16(gif, width);
    Put16(gif, height);
    gif += char(0xF7); // global colour table of 256 entries
    gif += char(0);
    gif += char(0);
    for (int i = 0; i < 256; ++i) {
        QRgb c = GifPalette(i);
        gif += char(qRed(c));
        gif += char(qGreen(c));
        gif += char(qBlue(c));
    }
    gif += std::string("\x21\xFF\x0BNETSCAPE2.0\x03\x01\x00\x00\x00", 19); // loop for ever
    for (int f = 0; f < frames; ++f) {
        gif += std::string("\x21\xF9\x04\x00", 4);
        Put16(gif, delayCentiseconds);
        gif += std::string("\x00\x00", 2);
        gif += char(0x2C);
        Put16(gif, 0);
        Put16(gif, 0);
        Put16(gif, width);
        Put16(gif, height);
        gif += char(0);
        gif += char(8); // minimum code size: 8-bit pixels, 9-bit codes
        // Literal codes only, with a clear code often enough that the width never grows.
        CodeWriter codes;
        int sinceClear = 0;
        codes.put(256, 9);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                if (sinceClear == 250) {
                    codes.put(256, 9);
                    sinceClear = 0;
                }
                codes.put(x == 0 && y == 0 ? 4u : unsigned(f + 1), 9);
                ++sinceClear;
            }
        codes.put(257, 9);
        gif += codes.finish();
    }
    gif += char(0x3B);
    std::ofstream file(path, std::ios::binary);
    file << gif;
    return bool(file);
}

bool WriteHdr(std::string const& path, int width, int height, std::vector<float> const& rgb)
{
    return stbi_write_hdr(path.c_str(), width, height, 3, rgb.data()) != 0;
}

bool WriteGarbage(std::string const& path)
{
    std::ofstream file(path, std::ios::binary);
    file << "this is not an image, whatever its extension says\n";
    return bool(file);
}

} // namespace vel::test
