#include "Core/ReadTextFile.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace vel {
namespace {

TEST(ReadTextFile, ReadsWholeFileAsUtf8)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    QString path = dir.filePath("a.txt");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QString::fromUtf8("line one\nzweite Zeile \xc3\xa4\n").toUtf8());
    file.close();
    EXPECT_EQ(ReadTextFile(path), QString::fromUtf8("line one\nzweite Zeile \xc3\xa4\n"));
}

TEST(ReadTextFile, MissingFileGivesEmptyText)
{
    EXPECT_TRUE(ReadTextFile("/nonexistent/definitely/not/here.txt").isEmpty());
}

} // namespace
} // namespace vel
