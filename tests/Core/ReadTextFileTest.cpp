#include "Core/ReadTextFile.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace vel {
namespace {

TEST(ReadTextFile, ReadsTheWholeFileAsUtf8AndAMissingOneAsEmpty)
{
    QTemporaryDir dir;
    QString const text = QString::fromUtf8("line one\nzweite Zeile \xc3\xa4\n");
    QFile file(dir.filePath("a.txt"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text.toUtf8());
    file.close();
    EXPECT_EQ(ReadTextFile(file.fileName()), text);
    EXPECT_TRUE(ReadTextFile(dir.filePath("missing.txt")).isEmpty());
}

} // namespace
} // namespace vel
