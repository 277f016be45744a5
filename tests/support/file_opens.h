#pragma once
// How many times `run` opens the file at `path`: a load that reads its file once per line of
// a list gets slow as the list grows, which no result shows.

#include <functional>
#include <string>

#include <sys/inotify.h>
#include <unistd.h>

namespace quorlen::test {

inline int Opens_Of(const std::string& path, const std::function<void()>& run) {
    const int watch = inotify_init1(IN_NONBLOCK);
    if (watch < 0) return -1;
    // The closes are watched too, or the queue would fold repeated opens into one event.
    if (inotify_add_watch(watch, path.c_str(), IN_OPEN | IN_CLOSE) < 0) {
        close(watch);
        return -1;
    }
    run();
    int opens = 0;
    alignas(inotify_event) char events[64 * 1024];
    for (ssize_t n; (n = read(watch, events, sizeof events)) > 0;)
        for (char* at = events; at < events + n;
             at += sizeof(inotify_event) + reinterpret_cast<inotify_event*>(at)->len)
            opens += (reinterpret_cast<inotify_event*>(at)->mask & IN_OPEN) != 0;
    close(watch);
    return opens;
}

} // namespace quorlen::test
