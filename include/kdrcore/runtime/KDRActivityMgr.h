// kdrcore/runtime/KDRActivityMgr.h - the shell of an activity indicator
#ifndef KDRCORE_RUNTIME_KDRACTIVITYMGR_H
#define KDRCORE_RUNTIME_KDRACTIVITYMGR_H

#include "kdrcore/KDRExport.h"

/// Base of a host's activity indicator, with one current manager for the process. The
/// notifications are not wired: start(), signal() and end() do nothing and call no onStart(),
/// onSignal() or onEnd(); the activity counter stays 0, so no manager is ever listening. The
/// current manager is not owned.
class KDRCORE_API KDRActivityMgr {
public:
    /// Makes `manager` current (null for none); nothing else changes.
    static void setCurrentActivityManager(KDRActivityMgr * manager);
    /// True when the activity counter is above 0; it is never changed from 0.
    static bool isActivityMgrListening();
    /// Empty.
    static void start();
    /// Empty.
    static void signal();
    /// Empty.
    static void end();

protected:
    /// Both clear the current manager and the counter: creating a manager does not install it,
    /// destroying any manager uninstalls the current one.
    KDRActivityMgr();
    virtual ~KDRActivityMgr();

    /// Empty; for derived classes.
    virtual void onStart();
    virtual void onSignal();
    virtual void onEnd();

private:
    static KDRActivityMgr * m_activityMgr;
    static int m_activityCounter;
};

#endif // KDRCORE_RUNTIME_KDRACTIVITYMGR_H
