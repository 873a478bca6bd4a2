// The desktop session starts what its autostart folder lists (Windows: the Run key).

#include "../Autostart.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace zelmor::platform {

namespace {

std::string autostartFolder()
{
    const char* config = std::getenv("XDG_CONFIG_HOME");
    if (config && *config == '/') return std::string(config) + "/autostart";
    const char* home = std::getenv("HOME");
    return std::string(home ? home : "") + "/.config/autostart";
}

std::string entryPath()
{
    return autostartFolder() + "/zelmor.desktop";
}

bool makeFolders(const std::string& path)
{
    for (std::size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        const std::string part = path.substr(0, slash);
        if (mkdir(part.c_str(), 0700) != 0 && errno != EEXIST) return false;
        if (slash == std::string::npos) return true;
    }
}

// The program as one quoted argument of the Exec key: the quoting's escapes, then the
// backslashes of the string value, and percent signs kept from being field codes.
std::string execArgument(const std::string& program)
{
    std::string quoted = "\"";
    for (char c : program) {
        if (c == '"' || c == '`' || c == '$')
            quoted += "\\\\";
        else if (c == '\\')
            quoted += "\\\\\\";
        else if (c == '%')
            quoted += '%';
        quoted += c;
    }
    return quoted + "\"";
}

// Written beside the entry and renamed over it, so that the session never reads half a file.
bool writeEntry(const std::string& program)
{
    const std::string folder = autostartFolder();
    if (!makeFolders(folder)) return false;
    std::string temporary = folder + "/.zelmor.desktop.XXXXXX";
    const int fd = mkstemp(temporary.data());
    if (fd < 0) return false;
    const std::string text =
        "[Desktop Entry]\nType=Application\nName=Zelmor\nExec=" + execArgument(program) +
        "\nTerminal=false\nX-GNOME-Autostart-enabled=true\n";
    const bool written = write(fd, text.data(), text.size()) == ssize_t(text.size()) &&
                         fchmod(fd, 0644) == 0 && fsync(fd) == 0;
    if (close(fd) != 0 || !written || std::rename(temporary.c_str(), entryPath().c_str()) != 0) {
        unlink(temporary.c_str());
        return false;
    }
    return true;
}

} // namespace

AutostartKind autostartKind()
{
    return AutostartKind::DesktopSession;
}

bool autostartEnabled()
{
    return access(entryPath().c_str(), F_OK) == 0;
}

bool setAutostart(bool enabled, const std::string& programUtf8)
{
    if (enabled) return writeEntry(programUtf8);
    return unlink(entryPath().c_str()) == 0 || errno == ENOENT;
}

} // namespace zelmor::platform
