#include "vancoreplatform/WindowsFiles.h"

#include "tests/common/TestSupport.h"

namespace {

VString NativeName(const VString& name)
{
    return VString(QString::fromStdWString(ToNativeName(name)));
}

struct NameCase {
    const char* name;
    VString given;
    VString native;
};

class NativeNameTest : public testing::TestWithParam<NameCase> {};

TEST_P(NativeNameTest, IsAbsoluteAndNormalisedWithAPrefix)
{
    EXPECT_EQ(NativeName(GetParam().given), GetParam().native);
}

INSTANTIATE_TEST_SUITE_P(Names,
    NativeNameTest,
    testing::Values(NameCase{"Drive", "C:\\a\\b.xml", "\\\\?\\C:\\a\\b.xml"},
        NameCase{"Slashes", "C:/a/b.xml", "\\\\?\\C:\\a\\b.xml"},
        NameCase{"Dots", "C:\\a\\.\\..\\b.xml", "\\\\?\\C:\\b.xml"},
        NameCase{"TrailingSeparator", "C:\\a\\", "\\\\?\\C:\\a\\"},
        NameCase{"GreekAndChinese", u"C:\\αβγ\\文.xml", u"\\\\?\\C:\\αβγ\\文.xml"},
        NameCase{"BeyondTheFirstPlane", u"C:\\\U0001F600.xml", u"\\\\?\\C:\\\U0001F600.xml"},
        NameCase{"LoneSurrogate", u"C:\\\xD800.xml", u"\\\\?\\C:\\\xD800.xml"},
        NameCase{"Share", "\\\\server\\share\\a.xml", "\\\\?\\UNC\\server\\share\\a.xml"},
        NameCase{"ShareWithSlashes", "//server/share/a.xml", "\\\\?\\UNC\\server\\share\\a.xml"},
        NameCase{"Prefix", "\\\\?\\C:\\a.xml", "\\\\?\\C:\\a.xml"},
        NameCase{"PrefixStopsNormalisation", "\\\\?\\C:\\a\\..\\b.", "\\\\?\\C:\\a\\..\\b."},
        NameCase{"PrefixOfAShare", "\\\\?\\UNC\\server\\share\\a.xml", "\\\\?\\UNC\\server\\share\\a.xml"},
        NameCase{"PrefixWithSlashes", "//?/C:/a.xml", "\\\\?\\C:\\a.xml"},
        NameCase{"Device", "NUL", "\\\\.\\NUL"},
        NameCase{"DeviceWithPrefix", "\\\\.\\pipe\\a", "\\\\.\\pipe\\a"},
        NameCase{"DeviceWithOneLetter", "\\\\.\\a", "\\\\.\\a"},
        NameCase{"DeviceOfADrive", "\\\\.\\C:", "\\\\.\\C:"},
        NameCase{"FileWithThePrefixOfADevice", "\\\\.\\C:\\a.xml", "\\\\?\\C:\\a.xml"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(NativeNameTest, RelativeNamesStartAtTheCurrentFolder)
{
    const testsupport::TemporaryFolder folder;
    const testsupport::CurrentFolder current(folder.Path("."));
    const VString path = VString(QDir::toNativeSeparators(QDir::currentPath()));
    EXPECT_EQ(NativeName("a/b.xml"), VString("\\\\?\\") + path + "\\a\\b.xml");
    EXPECT_EQ(NativeName(path.left(2) + "a.xml"), VString("\\\\?\\") + path + "\\a.xml");
    EXPECT_EQ(NativeName("\\a.xml"), VString("\\\\?\\") + path.left(2) + "\\a.xml");
}

TEST(NativeNameTest, LongNamesAreComplete)
{
    VString name = "C:";
    while (name.length() < 30000)
        name += "\\a long name of a folder";
    EXPECT_EQ(NativeName(name), VString("\\\\?\\") + name);
}

TEST(NativeNameTest, DevicesAndPipesAreNotFiles)
{
    for (const char* device : {"NUL", "CON", "\\\\.\\C:", "\\\\.\\pipe\\a", "\\\\?\\pipe\\a"})
        EXPECT_TRUE(IsDeviceName(ToNativeName(device))) << device;
    for (const char* file : {"C:\\a.xml", "\\\\.\\C:\\a.xml", "\\\\?\\C:\\a.xml", "\\\\server\\pipe\\a.xml"})
        EXPECT_FALSE(IsDeviceName(ToNativeName(file))) << file;
}

TEST(NativeNameTest, NamesThatNoFileCanHaveThrow)
{
    EXPECT_THROW(ToNativeName(""), std::system_error);
    EXPECT_THROW(ToNativeName(VString(u"a\0b", 3)), std::system_error);
}

}  // namespace
