#pragma once

#include <csignal>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace dumpsig {

/// Keeps signals from ending the process while it lives; those that came meanwhile do it then. Signals that
/// the process ignores, or that were held back before, are nothing to it.
class SignalHold final {
public:
    /// SIGINT, SIGQUIT, SIGTERM, SIGHUP, and SIGPIPE.
    SignalHold();
    SignalHold(const SignalHold&) = delete;
    SignalHold& operator=(const SignalHold&) = delete;
    ~SignalHold();

    /// The signals that somebody sends, SIGPIPE not being one.
    const sigset_t& interrupts() const { return sent; }

private:
    sigset_t before;
    sigset_t sent;
};

/// Looks after a run from a thread of its own: keeps its progress shown, and ends it cleanly when somebody
/// interrupts it. To be made before any other thread, and before any file that must not be left behind.
class Attendant final {
public:
    struct Display {
        std::function<void()> draw;
        std::function<void()> erase;
    };

    /// Draws after 0.2 s and then ten times a second, and erases what was drawn at the end, whatever the end
    /// is. Both are called in the thread, and may be empty.
    explicit Attendant(Display display);
    Attendant(const Attendant&) = delete;
    Attendant& operator=(const Attendant&) = delete;
    ~Attendant();

    /// A file to be removed if the process is interrupted from now on; an empty path ends that.
    void removeIfInterrupted(const std::string& path);

private:
    void attend();
    void draw();
    void dieOf(int signal);

    const SignalHold hold;
    const Display display;
    bool drawn = false;
    std::mutex mutex;
    std::string partialFile;
    const int signals;
    const int end;
    std::thread thread;
};

} // namespace dumpsig
