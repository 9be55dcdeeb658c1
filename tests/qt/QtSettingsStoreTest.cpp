#include "qt/services/QtSettingsStore.h"
#include "testsupport/FileSizeLimit.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <tuple>

using namespace zav;

// The per-user settings in a fresh folder: <dir>/ZAV/ZAV.conf.
TEST(QtSettingsStore, ValuesPersistPerSectionASectionGoesWholeAndAFailedWriteIsTold) {
    QTemporaryDir dir;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, dir.path());
    const std::string file = dir.filePath("ZAV/ZAV.conf").toStdString();
    const std::tuple<std::string, std::string, std::string> values[] = {
        {"default", "Profile", "C:\\data\\home.zav"},
        {"default", "MRUF2", ""},
        {"default", "MRUF1", "/home/op/J\xC3\xB6rg, site \"A\"; b=c.zav"},
        {"default", "Odd", "@Invalid()"},
        {"gps", "Beep", "other section"}};
    {
        QtSettingsStore store;
        EXPECT_EQ(store.GetSetting("default", "Profile", "1"), "1");
        for (const auto& [section, key, value] : values)
            store.SaveSetting(section, key, value);
        EXPECT_EQ(store.WriteError(), "");
    }
    ASSERT_TRUE(QFile::exists(QString::fromStdString(file)));
    QtSettingsStore reopened;
    for (const auto& [section, key, value] : values)
        EXPECT_EQ(reopened.GetSetting(section, key, "default"), value) << key;
    reopened.DeleteSetting("default");
    QtSettingsStore after;
    EXPECT_EQ(after.GetSetting("default", "Profile", "gone") + after.GetSetting("gps", "Beep", ""),
              "goneother section");

    QFile f(QString::fromStdString(file)); // hand-edited: read as its text, commas and all
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("[default]\nMRUF1=/a/b,c.zav\nBeep=True\n");
    f.close();
    QtSettingsStore store;
    EXPECT_EQ(store.GetSetting("default", "MRUF1", ""), "/a/b,c.zav");
    {
        zav::test::FileSizeLimit full(10); // a full disk for this process
        store.SaveSetting("default", "Profile", std::string(200, 'p'));
    }
    EXPECT_EQ(store.WriteError(), "cannot write " + file);
    EXPECT_EQ(QtSettingsStore().GetSetting("default", "Beep", ""), "True");
}
