#include "qt/services/QtSettingsStore.h"
#include "testsupport/FileSizeLimit.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

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
    {
        QtSettingsStore store;
        EXPECT_EQ(store.GetSetting("default", "Beep", "1"), "1");
        store.SaveSetting("default", "Beep", "False");
        store.SaveSetting("default", "Profile", "C:\\data\\home.zav");
        store.SaveSetting("default", "MRUF1", "/home/op/J\xC3\xB6rg, site \"A\"; b=c.zav");
        store.SaveSetting("default", "MRUF2", "");
        store.SaveSetting("default", "Odd", "@Invalid()");
        store.SaveSetting("gps", "Beep", "other section");
        EXPECT_EQ(store.GetSetting("default", "Beep", "1"), "False");
    }
    ASSERT_TRUE(QFile::exists(file())) << "settings are written where the platform keeps them";

    QtSettingsStore reopened;
    EXPECT_EQ(reopened.GetSetting("default", "Beep", "1"), "False");
    EXPECT_EQ(reopened.GetSetting("default", "Profile", ""), "C:\\data\\home.zav");
    EXPECT_EQ(reopened.GetSetting("default", "MRUF1", ""),
              "/home/op/J\xC3\xB6rg, site \"A\"; b=c.zav");
    EXPECT_EQ(reopened.GetSetting("default", "MRUF2", "default"), "") << "empty is a value";
    EXPECT_EQ(reopened.GetSetting("default", "Odd", ""), "@Invalid()");
    EXPECT_EQ(reopened.GetSetting("gps", "Beep", ""), "other section");
    EXPECT_EQ(reopened.GetSetting("gps", "Port", "1"), "1");
    EXPECT_EQ(reopened.GetSetting("nosuchsection", "Beep", "x"), "x");

    reopened.DeleteSetting("default");
    reopened.DeleteSetting("never-there"); // a missing section is no error
    QtSettingsStore after;
    EXPECT_EQ(after.GetSetting("default", "Profile", "gone"), "gone");
    EXPECT_EQ(after.GetSetting("default", "MRUF1", "gone"), "gone");
    EXPECT_EQ(after.GetSetting("gps", "Beep", ""), "other section");
}

TEST_F(QtSettingsStoreTest, AHandEditedListReadsAsItsText) {
    ASSERT_TRUE(QDir(dir.path()).mkpath("ZAV"));
    QFile f(file());
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("[default]\nMRUF1=/a/b,c.zav\nBaseUrl=http://example.org/\n");
    f.close();
    QtSettingsStore store;
    EXPECT_EQ(store.GetSetting("default", "MRUF1", ""), "/a/b,c.zav");
    EXPECT_EQ(store.GetSetting("default", "BaseUrl", ""), "http://example.org/");
}

TEST_F(QtSettingsStoreTest, AFailedWriteIsToldAndTheFileKeepsWhatItHad) {
    ASSERT_TRUE(dir.isValid());
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
