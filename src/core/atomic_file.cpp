#include "core/atomic_file.h"

#include "core/run_error.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorlen {

namespace {

Run_Error Error_From_Errno(int err) {
    switch (err) {
    case ENOENT:
        return errors::Path_Not_Found();
    case EACCES:
    case EPERM:
    case EROFS:
        return errors::Permission_Denied();
    default:
        return errors::Bad_File_Name_Or_Number();
    }
}

std::string Folder_Of(const std::string& path) {
    auto slash = path.find_last_of('/');
    if (slash == std::string::npos) return ".";
    if (slash == 0) return "/";
    return path.substr(0, slash);
}

void Sync_Folder(const std::string& folder) {
    int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return;
    ::fsync(fd);
    ::close(fd);
}

} // namespace

void Replace_File_Atomically(const std::string& path, std::string_view content,
                             const std::string& temp_path) {
    int fd = ::open(temp_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) throw Error_From_Errno(errno);
    std::size_t done = 0;
    while (done < content.size()) {
        ssize_t n = ::write(fd, content.data() + done, content.size() - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            int err = errno;
            ::close(fd);
            ::unlink(temp_path.c_str());
            throw Error_From_Errno(err);
        }
        done += static_cast<std::size_t>(n);
    }
    if (::fsync(fd) != 0 || ::close(fd) != 0) {
        int err = errno;
        ::unlink(temp_path.c_str());
        throw Error_From_Errno(err);
    }
    if (::rename(temp_path.c_str(), path.c_str()) != 0) {
        int err = errno;
        ::unlink(temp_path.c_str());
        throw Error_From_Errno(err);
    }
    Sync_Folder(Folder_Of(path));
}

void Replace_File_Atomically(const std::string& path, std::string_view content) {
    Replace_File_Atomically(path, content, path + ".part" + std::to_string(::getpid()));
}

std::string Read_Whole_File(const std::string& path) {
    // Opened without waiting, so a named pipe with no writer can't hold the program; only a
    // regular file is read, as a folder would read as nothing and a device without end.
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) throw errors::File_Not_Found();
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        throw errors::Path_File_Access_Error();
    }
    std::string content;
    char buffer[65536];
    for (;;) {
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n > 0) {
            content.append(buffer, static_cast<std::size_t>(n));
        } else if (n == 0 || errno != EINTR) {
            break;
        }
    }
    ::close(fd);
    return content;
}

bool File_Exists(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

std::optional<std::string> Why_Not_A_File(const std::string& path) {
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0)
        return errno == ENOENT || errno == ENOTDIR
                   ? "does not exist"
                   : std::string("can not be read (") + std::strerror(errno) + ")";
    if (S_ISDIR(st.st_mode)) return "is a folder";
    if (S_ISFIFO(st.st_mode)) return "is a named pipe (FIFO)";
    if (S_ISCHR(st.st_mode) || S_ISBLK(st.st_mode)) return "is a device";
    if (S_ISSOCK(st.st_mode)) return "is a socket";
    if (!S_ISREG(st.st_mode)) return "is not a regular file";
    if (::access(path.c_str(), R_OK) != 0)
        return std::string("can not be read (") + std::strerror(errno) + ")";
    return std::nullopt;
}

} // namespace quorlen
