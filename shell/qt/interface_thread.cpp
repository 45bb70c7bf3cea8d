#include "shell/qt/interface_thread.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <deque>

#include "control/search_thread.h"

TickFigures tick_figures;

namespace {

constexpr int PAUSE_STEP_MS = 10;

struct Work {
    void (*work)(int32_t argument);
    int32_t argument;
};

// Wakes the interface thread; carries nothing when what waits is to be run.
class WorkEvent : public QEvent {
  public:
    static QEvent::Type event_type() {
        static const int type = QEvent::registerEventType();
        return static_cast<QEvent::Type>(type);
    }
    explicit WorkEvent(Work posted) : QEvent(event_type()), work(posted) {}

    Work work;
};

void tick();

class Receiver : public QObject {
  public:
    Receiver() {
        timer.setTimerType(Qt::PreciseTimer);
        timer.setInterval(TICK_MS);
        // Queued, as a timer does not go on within its own slot: ticks go on beneath a box that a tick opens.
        QObject::connect(&timer, &QTimer::timeout, this, tick, Qt::QueuedConnection);
    }

    bool event(QEvent* event) override {
        if (event->type() != WorkEvent::event_type()) return QObject::event(event);
        const Work work = static_cast<WorkEvent*>(event)->work;
        if (work.work) waiting.push_back(work);
        run_waiting();
        return true;
    }

    void run_waiting() {
        while (!waiting.empty() && !pausing) {
            const Work next = waiting.front();
            waiting.pop_front();
            next.work(next.argument);
        }
    }

    QTimer timer;
    QElapsedTimer since_tick;
    std::deque<Work> waiting;
    bool pausing = false;
};

// Owned by the interface thread. Other threads post to it; it goes only when none of them does any more.
std::atomic<Receiver*> receiver{nullptr};

Receiver* interface_receiver() { return receiver.load(std::memory_order_acquire); }

void count_tick(Receiver& r) {
    const int64_t late_us =
        r.since_tick.isValid() ? r.since_tick.nsecsElapsed() / 1000 - TICK_MS * int64_t{1000} : 0;
    ++tick_figures.ticks;
    tick_figures.worst_late_us = std::max(tick_figures.worst_late_us, late_us);
    r.since_tick.start();
}

void tick() {
    Receiver& r = *interface_receiver();
    if (r.pausing) return;
    count_tick(r);
    timer_tick();
}

}  // namespace

void begin_interface_thread() {
    if (!interface_receiver()) receiver.store(new Receiver, std::memory_order_release);
    tick_figures = TickFigures{};
}

void end_interface_thread() { delete receiver.exchange(nullptr, std::memory_order_acq_rel); }

void post_work(void (*work)(int32_t argument), int32_t argument) {
    if (Receiver* const r = interface_receiver())
        QCoreApplication::postEvent(r, new WorkEvent({work, argument}));
}

void start_ticks() {
    Receiver& r = *interface_receiver();
    r.since_tick.invalidate();
    r.timer.start();
}

void tick_if_search_ended() {
    const Receiver* const r = interface_receiver();
    const bool ended = !search_thread.searching.load(std::memory_order_acquire) &&
                       search_thread.search_finished.load(std::memory_order_acquire);
    if (r && !r->pausing && r->timer.isActive() && ended) timer_tick();
}

void pause_interface(int milliseconds) {
    Receiver* const r = interface_receiver();
    if (!r || r->pausing) return;
    r->pausing = true;
    QElapsedTimer elapsed;
    elapsed.start();
    for (;;) {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        const int64_t left = milliseconds - elapsed.elapsed();
        if (left <= 0) break;
        QThread::msleep(static_cast<unsigned long>(std::min<int64_t>(left, PAUSE_STEP_MS)));
    }
    r->pausing = false;
    r->since_tick.invalidate();
    // What came in meanwhile has its turn when the caller is done.
    QCoreApplication::postEvent(r, new WorkEvent({nullptr, 0}));
}

bool interface_pauses() {
    const Receiver* const r = interface_receiver();
    return r && r->pausing;
}
