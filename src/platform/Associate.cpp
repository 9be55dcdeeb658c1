#include "platform/Associate.h"

#include "platform/AtomicFile.h"
#include "platform/CommandLine.h"
#include "platform/TextHelpers.h"

#include <cstdlib>
#include <filesystem>

namespace zav {
namespace {

namespace fs = std::filesystem;

std::string trimBlanks(const std::string& text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string xmlEscaped(const std::string& text) {
    std::string out;
    for (char c : text) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        default:
            out += c;
        }
    }
    return out;
}

// A desktop entry's string value: backslash and control characters escaped.
std::string desktopString(const std::string& text) {
    std::string out;
    for (char c : text) {
        switch (c) {
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\t':
            out += "\\t";
            break;
        case '\r':
            out += "\\r";
            break;
        default:
            out += c;
        }
    }
    return out;
}

bool writeFile(const fs::path& path, const std::string& text) {
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    return !error && WriteFileAtomically(path.string(), text);
}

// The program's own icon when it lies beside the program, else the icon theme's name.
std::string iconFor(const std::string& exePath, const std::string& name) {
    std::error_code ignored;
    const fs::path beside = fs::path(exePath).parent_path() / (name + ".svg");
    if (fs::is_regular_file(beside, ignored))
        return beside.string();
    return name;
}

} // namespace

std::string DesktopExecArgument(const std::string& path) {
    std::string quoted = "\"";
    for (char c : path) {
        if (c == '"' || c == '`' || c == '$' || c == '\\')
            quoted += '\\';
        if (c == '%')
            quoted += '%';
        quoted += c;
    }
    quoted += '"';
    return desktopString(quoted);
}

bool Associate(const std::string& appName, const std::string& extension, const std::string& exePath,
               const std::string& dataHome, Shell& shell) {
    const std::string ext = trimBlanks(extension);
    if (ext.empty() || ext[0] != '.' || dataHome.empty())
        return false;
    const std::string bare = ext.substr(1);
    const std::string typeName = bare + " File"; // what the file manager calls such files
    const std::string mimeType = "application/x-" + LowerAscii(bare) + "-profile";
    const std::string name = LowerAscii(appName);
    const fs::path home(dataHome);

    const std::string mimeXml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
        "  <mime-type type=\"" +
        xmlEscaped(mimeType) + "\">\n    <comment>" + xmlEscaped(typeName) +
        "</comment>\n    <glob pattern=\"*" + xmlEscaped(ext) +
        "\"/>\n  </mime-type>\n"
        "</mime-info>\n";
    if (!writeFile(home / "mime" / "packages" / (name + ".xml"), mimeXml))
        return false;

    const std::string entry = "[Desktop Entry]\n"
                              "Type=Application\n"
                              "Name=" +
                              desktopString(appName) +
                              "\n"
                              "Comment=Radio noise measurement with a sound card\n"
                              "Exec=" +
                              DesktopExecArgument(exePath) + " %f\n" +
                              "Icon=" + desktopString(iconFor(exePath, name)) + "\n" +
                              "MimeType=" + mimeType + ";\n" +
                              "Terminal=false\n"
                              "Categories=Science;Electronics;\n";
    const std::string desktopFile = name + ".desktop";
    if (!writeFile(home / "applications" / desktopFile, entry))
        return false;

    // The caches and the default are the desktop's business; without the tools the files
    // above still take effect at the next refresh.
    shell.Run("update-mime-database", JoinCommandLine({(home / "mime").string()}));
    shell.Run("update-desktop-database", JoinCommandLine({(home / "applications").string()}));
    shell.Run("xdg-mime", JoinCommandLine({"default", desktopFile, mimeType}));
    return true;
}

std::string XdgDataHome() {
    const char* data = std::getenv("XDG_DATA_HOME");
    if (data && fs::path(data).is_absolute())
        return data;
    const char* home = std::getenv("HOME");
    if (home && *home)
        return (fs::path(home) / ".local" / "share").string();
    return {};
}

bool associateFileTypes(const std::string& exePath, Shell& shell) {
    return Associate("ZAV", ".zav", exePath, XdgDataHome(), shell);
}

std::string AssociationStatus(bool done, const std::string& dataHome) {
    if (!done)
        return ".zav files not associated: the desktop entry could not be written in " +
               (dataHome.empty() ? std::string("the data folder") : dataHome);
    return ".zav files now open with ZAV: desktop entry " +
           (fs::path(dataHome) / "applications" / "zav.desktop").string();
}

} // namespace zav
