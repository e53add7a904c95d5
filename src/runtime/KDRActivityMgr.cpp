// KDRActivityMgr.cpp - the activity indicator's shell: notifications are not wired
#include "kdrcore/runtime/KDRActivityMgr.h"

KDRActivityMgr * KDRActivityMgr::m_activityMgr = nullptr;
int KDRActivityMgr::m_activityCounter = 0;

KDRActivityMgr::KDRActivityMgr() {
    m_activityMgr = nullptr;
    m_activityCounter = 0;
}

KDRActivityMgr::~KDRActivityMgr() {
    m_activityMgr = nullptr;
    m_activityCounter = 0;
}

void KDRActivityMgr::setCurrentActivityManager(KDRActivityMgr * manager) {
    m_activityMgr = manager;
}

bool KDRActivityMgr::isActivityMgrListening() {
    return m_activityCounter > 0;
}

void KDRActivityMgr::start() {}

void KDRActivityMgr::signal() {}

void KDRActivityMgr::end() {}

void KDRActivityMgr::onStart() {}

void KDRActivityMgr::onSignal() {}

void KDRActivityMgr::onEnd() {}
