#pragma once
// The continue-on-error discipline of every procedure: each step runs even when an earlier
// one failed, and when the procedure ends the last error, if any, becomes one line
// "Error in " + the procedure's name + the error's description in Debug_file.log.
// Nothing is thrown to the caller.

#include "core/debug_log.h"
#include "core/run_error.h"

#include <exception>
#include <string>
#include <utility>

namespace quorlen {

class Proc_Guard {
public:
    // `name` is the procedure's human name exactly as support knows it, trailing blanks and
    // all (e.g. "BostProgMain Form Load").
    Proc_Guard(Debug_Log& log, std::string name) : log_(log), name_(std::move(name)) {}
    Proc_Guard(const Proc_Guard&) = delete;
    Proc_Guard& operator=(const Proc_Guard&) = delete;
    ~Proc_Guard() { Finish(); }

    // Runs one step; an exception is remembered as the last error and swallowed.
    template <class F>
    void Step(F&& step) noexcept {
        try {
            std::forward<F>(step)();
        } catch (const std::exception& e) {
            Fail(e.what());
        } catch (...) {
            Fail("Unknown error");
        }
    }

    // Records an error without an exception (a step that reports by flag).
    void Fail(std::string description) {
        failed_ = true;
        last_error_ = std::move(description);
    }

    bool Failed() const { return failed_; }
    const std::string& Last_Error() const { return last_error_; }

    // Writes the line now (the procedure's tail); later destruction writes nothing more.
    void Finish() {
        if (failed_) log_.Write_Line("Error in " + name_ + last_error_);
        failed_ = false;
        last_error_.clear();
    }

private:
    Debug_Log& log_;
    std::string name_;
    bool failed_ = false;
    std::string last_error_;
};

} // namespace quorlen
