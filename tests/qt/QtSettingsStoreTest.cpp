#include "qt/services/QtSettingsStore.h"
#include "testsupport/FileSizeLimit.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <tuple>

using namespace zav;

namespace {

// Points the per-user settings at a fresh folder: <dir>/ZAV/ZAV.conf.
class QtSettingsStoreTest : public ::testing::Test {
protected:
    QtSettingsStoreTest() {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, dir.path());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, dir.path());
    }
    QString file() const { return dir.filePath("ZAV/ZAV.conf"); }

    QTemporaryDir dir;
};

} // namespace

TEST_F(QtSettingsStoreTest, ValuesPersistPerSectionAndKeyAndASectionGoesWhole) {
    ASSERT_TRUE(dir.isValid());
    const std::vector<std::tuple<std::string, std::string, std::string>> values = {
        {"default", "Beep", "False"},
        {"default", "Profile", "C:\\data\\home.zav"},
        {"default", "MRUF1", "/home/op/J\xC3\xB6rg, site \"A\"; b=c.zav"},
        {"default", "MRUF2", ""}, // empty is a value
        {"default", "Odd", "@Invalid()"},
        {"gps", "Beep", "other section"}};
    {
        QtSettingsStore store;
        EXPECT_EQ(store.GetSetting("default", "Beep", "1"), "1");
        for (const auto& [section, key, value] : values)
            store.SaveSetting(section, key, value);
    }
    ASSERT_TRUE(QFile::exists(file())) << "settings are written where the platform keeps them";
    QtSettingsStore reopened;
    for (const auto& [section, key, value] : values)
        EXPECT_EQ(reopened.GetSetting(section, key, "default"), value) << key;
    EXPECT_EQ(reopened.GetSetting("gps", "Port", "1"), "1");
    reopened.DeleteSetting("default");
    reopened.DeleteSetting("never-there"); // a missing section is no error
    QtSettingsStore after;
    EXPECT_EQ(after.GetSetting("default", "Profile", "gone"), "gone");
    EXPECT_EQ(after.GetSetting("gps", "Beep", ""), "other section");

    // A hand-edited file reads as its text, commas and all.
    QFile f(file());
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("[default]\nMRUF1=/a/b,c.zav\nBaseUrl=http://example.org/\n");
    f.close();
    EXPECT_EQ(QtSettingsStore().GetSetting("default", "MRUF1", ""), "/a/b,c.zav");
    EXPECT_EQ(QtSettingsStore().GetSetting("default", "BaseUrl", ""), "http://example.org/");
}

TEST_F(QtSettingsStoreTest, AFailedWriteIsToldAndTheFileKeepsWhatItHad) {
    QtSettingsStore store;
    store.SaveSetting("default", "Beep", "True");
    EXPECT_EQ(store.WriteError(), "");
    {
        zav::test::FileSizeLimit full(10); // a full disk for this process
        store.SaveSetting("default", "Profile", std::string(200, 'p'));
    }
    EXPECT_EQ(store.WriteError(), "cannot write " + file().toStdString());
    EXPECT_EQ(QtSettingsStore().GetSetting("default", "Beep", ""), "True");
}
