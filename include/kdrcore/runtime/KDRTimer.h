// kdrcore/runtime/KDRTimer.h - lap timer on the process-wide high-resolution clock
#ifndef KDRCORE_RUNTIME_KDRTIMER_H
#define KDRCORE_RUNTIME_KDRTIMER_H

#include "kdrcore/KDRExport.h"
#include "kdrcore/containers/KDRArray.h"

/// Records named laps, in seconds since the process-wide time base (the moment initTimingTools
/// first succeeded), and prints them one line per lap through `m_outFunction`. Names are
/// zero-terminated 16-bit text held by pointer: never copied nor freed, they must outlive the laps
/// that use them. `m_times` and `m_names` always have the same length. One thread at a time.
class KDRCORE_API KDRTimer {
public:
    /// The time base is set.
    static bool timingInitDone;
    /// Receives each line of print(), terminated, without a line end; null prints nothing.
    static void (*m_outFunction)(unsigned short const * line);

    /// Sets the time base on the first success; later calls change nothing and give true.
    /// False when the platform has no high-resolution counter; a later call then tries again.
    static bool initTimingTools();
    /// Seconds since the time base; 0.0 before initTimingTools succeeded.
    static double getElapsedTime();

    /// No laps, the clock initialised, then reset with an empty name.
    KDRTimer();

    /// Moves the origin to now; laps and name stay.
    void reset();
    /// Starts a new series: `m_name` := name, origin now, no laps, room for 15 reserved.
    void reset(unsigned short const * name);
    /// Seconds from the origin to now.
    double getElapsedTimeFromReset() const;
    /// Records a lap at the time now under `name`.
    void pushTime(unsigned short const * name);
    /// The time, since the time base, of the first lap whose name has the same characters as
    /// `name`, and its index in `index`; no such lap: 0.0 and index -1. A null name matches only
    /// a null name. The third argument is not read.
    double findTime(unsigned short const * name, int & index, int);
    /// One line per lap i, " %d: %s = %.5f  [%.5f]": i, the name, the time from the origin, the
    /// time from the lap before (from the origin for lap 0). Each line is built in a buffer of
    /// 100 units, terminator included; a longer line is cut there. Changes nothing.
    void print();

    KDRArray<double> m_times;                 ///< one time per lap, seconds since the time base
    KDRArray<unsigned short const *> m_names; ///< one name per lap, same index as m_times
    unsigned short const * m_name;            ///< the name of the last reset with a name
    double m_resetTime;                       ///< the origin, seconds since the time base
};

#endif // KDRCORE_RUNTIME_KDRTIMER_H
