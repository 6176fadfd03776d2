#include "Scene/IFile.h"
#include "Scene/OFile.h"
#include "Math/Matrix34.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <limits>

namespace vel {
namespace {

TEST(FileStreams, ValuesAndStringsRoundTripThroughMemory)
{
    OFile out;
    Matrix34<double> m = Matrix34<double>::Translation({1, 2, 3});
    out.writeValue(int(-7));
    out.writeValue(2.5f);
    out.writeValue(m);
    out.writeValue(true);
    out.writeString("Cube");
    std::string bytes = out.bytes();
    // Raw copies, no padding: 4 + 4 + 96 + 1 + (4 + 4).
    ASSERT_EQ(bytes.size(), 113u);
    EXPECT_EQ(bytes.substr(109), "Cube");

    IFile in(QByteArray(bytes.data(), int(bytes.size())));
    int i = 0;
    float f = 0;
    Matrix34<double> back;
    bool b = false;
    std::string name;
    EXPECT_TRUE(in.readValue(i) && in.readValue(f) && in.readValue(back) && in.readValue(b) && in.readString(name));
    EXPECT_EQ(i, -7);
    EXPECT_EQ(f, 2.5f);
    EXPECT_EQ(back, m);
    EXPECT_TRUE(b);
    EXPECT_EQ(name, "Cube");
    EXPECT_TRUE(in.atEnd());
    EXPECT_FALSE(in.readValue(i));
}

TEST(FileStreams, CorruptLengthsAndTruncatedValuesAreRefused)
{
    // String lengths far beyond the stream and below zero, then a value cut short.
    for (int length : {1 << 30, -5}) {
        OFile out;
        out.writeValue(length);
        out.writeString("ab");
        IFile in(QByteArray(out.bytes().data(), int(out.bytes().size())));
        std::string text;
        EXPECT_FALSE(in.readString(text)) << length;
        EXPECT_TRUE(text.empty()) << length;
    }
    IFile truncated(QByteArray("\x01\x02", 2));
    double d = 0;
    EXPECT_FALSE(truncated.readValue(d));
}

TEST(FileStreams, SkipsStayInsideTheStream)
{
    struct Case {
        long long length;
        bool skips;
        long long at; // the position afterwards
    };
    long long const largest = std::numeric_limits<long long>::max();
    Case const cases[] = {{0, true, 1}, {3, true, 4}, {4, false, 1}, {-1, false, 1},
                          {largest, false, 1}, {largest - 1, false, 1}, {-largest - 1, false, 1}};
    for (Case const& c : cases) {
        IFile in(QByteArray("abcd", 4));
        char first = 0;
        ASSERT_EQ(in.readRawData(&first, 1), 1);
        EXPECT_EQ(in.skipRawData(c.length), c.skips) << c.length;
        EXPECT_EQ(in.pos(), c.at) << c.length;
    }
}

TEST(FileStreams, WritesAndReadsABinaryFile)
{
    QTemporaryDir dir;
    std::string path = dir.filePath("a.vsc").toStdString();
    {
        OFile out(path);
        ASSERT_TRUE(out.isOpen());
        out.writeValue(0xFFFFAAAAu);
        out.writeValue(20230711u);
    }
    IFile in(QString::fromStdString(path));
    ASSERT_TRUE(in.isOpen());
    EXPECT_EQ(in.size(), 8);
    unsigned id = 0, version = 0;
    EXPECT_TRUE(in.readValue(id) && in.readValue(version));
    EXPECT_EQ(id, 0xFFFFAAAAu);
    EXPECT_EQ(version, 20230711u);

    IFile missing(QString("/nonexistent/file.vsc"));
    EXPECT_FALSE(missing.isOpen());
    EXPECT_TRUE(missing.atEnd());
    EXPECT_FALSE(missing.readValue(id));
    OFile unwritable("/nonexistent/dir/file.vsc");
    EXPECT_FALSE(unwritable.isOpen());
}

} // namespace
} // namespace vel
