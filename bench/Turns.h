#pragma once

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <ctime>

inline double milliseconds(clockid_t clock)
{
    timespec time{};
    ::clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

// Runs the event loop for so long.
inline void wait(std::chrono::milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

// The longest that one turn of the event loop keeps the main thread, in CPU time and on the clock.
class Heartbeat
{
public:
    Heartbeat()
    {
        m_timer.callOnTimeout([this] { beat(); });
        m_timer.start(std::chrono::milliseconds(1));
        m_clock.start();
    }

    double longestCpu() const { return m_longestCpu; }
    double longestGap() const { return m_longestGap; }

private:
    void beat()
    {
        const double cpu = milliseconds(CLOCK_THREAD_CPUTIME_ID);
        m_longestCpu = std::max(m_longestCpu, cpu - m_lastCpu);
        m_lastCpu = cpu;
        m_longestGap = std::max(m_longestGap, static_cast<double>(m_clock.nsecsElapsed()) / 1e6);
        m_clock.restart();
    }

    QTimer m_timer;
    QElapsedTimer m_clock;
    double m_lastCpu = milliseconds(CLOCK_THREAD_CPUTIME_ID);
    double m_longestCpu = 0;
    double m_longestGap = 0;
};
