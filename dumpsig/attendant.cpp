#include "dumpsig/attendant.h"

#include "commons/errors/system_error.h"

#include <array>

#include <errno.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace dumpsig {

namespace {

constexpr int kFirstDrawingMs = 200;
constexpr int kNextDrawingMs = 100;

bool isDeadly(int signal, const sigset_t& heldBefore) {
    struct sigaction action = {};
    sigaction(signal, nullptr, &action);
    return action.sa_handler == SIG_DFL && sigismember(&heldBefore, signal) == 0;
}

int opened(int fd, const char* what) {
    if (fd == -1) {
        brask::throwSystemError(what, errno);
    }
    return fd;
}

} // namespace

SignalHold::SignalHold() {
    sigemptyset(&sent);
    pthread_sigmask(SIG_SETMASK, nullptr, &before);
    for (const int signal : {SIGINT, SIGQUIT, SIGTERM, SIGHUP}) {
        if (isDeadly(signal, before)) {
            sigaddset(&sent, signal);
        }
    }
    sigset_t held = sent;
    sigaddset(&held, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &held, nullptr);
}

SignalHold::~SignalHold() {
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

Attendant::Attendant(Display display)
    : display(std::move(display)), signals(opened(signalfd(-1, &hold.interrupts(), SFD_CLOEXEC), "signalfd")),
      end(opened(eventfd(0, EFD_CLOEXEC), "eventfd")), thread([this] { attend(); }) {}

Attendant::~Attendant() {
    eventfd_write(end, 1);
    thread.join();
    close(end);
    close(signals);
}

void Attendant::removeIfInterrupted(const std::string& path) {
    const std::scoped_lock lock(mutex);
    partialFile = path;
}

void Attendant::attend() {
    std::array<pollfd, 2> events{
        {{.fd = signals, .events = POLLIN, .revents = 0}, {.fd = end, .events = POLLIN, .revents = 0}}};
    int timeout = display.draw ? kFirstDrawingMs : -1;
    while (events[1].revents == 0) {
        const int count = poll(events.data(), events.size(), timeout);
        if (count == 0) {
            draw();
            timeout = kNextDrawingMs;
        }
        signalfd_siginfo info{};
        if (events[0].revents != 0 && read(signals, &info, sizeof info) == sizeof info) {
            dieOf(static_cast<int>(info.ssi_signo));
        }
    }
    if (drawn) {
        display.erase();
    }
}

void Attendant::draw() {
    display.draw();
    drawn = true;
}

void Attendant::dieOf(int signal) {
    if (drawn) {
        display.erase();
    }
    const std::scoped_lock lock(mutex);
    if (!partialFile.empty()) {
        unlink(partialFile.c_str());
    }
    // Its action is the default one, which ends the whole process. Only the first process of a container
    // survives it.
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    raise(signal);
    _exit(128 + signal);
}

} // namespace dumpsig
