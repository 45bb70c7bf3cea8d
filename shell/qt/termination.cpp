#include "shell/qt/termination.h"

#include <fcntl.h>
#include <unistd.h>

#include <QApplication>
#include <QSocketNotifier>
#include <cerrno>
#include <csignal>

namespace {

enum PipeEnd { READ_END, WRITE_END };
int wishes[2];  // a pipe: a signal handler may do little more than write to one

void pass_on(int) {
    const int former_error = errno;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = write(wishes[WRITE_END], &byte, 1);
    errno = former_error;
}

void heed(int signal) {
    struct sigaction action;
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) return;
    action = {};
    action.sa_handler = pass_on;
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    sigaction(signal, &action, nullptr);
}

}  // namespace

void heed_termination() {
    if (pipe2(wishes, O_CLOEXEC | O_NONBLOCK) != 0) return;
    auto* const notifier = new QSocketNotifier(wishes[READ_END], QSocketNotifier::Read, qApp);
    QObject::connect(notifier, &QSocketNotifier::activated, qApp, [notifier] {
        notifier->setEnabled(false);
        QApplication::quit();
    });
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) heed(signal);
}
