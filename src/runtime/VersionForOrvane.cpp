// VersionForOrvane.cpp - the open-in-progress flag
#include "kdrcore/runtime/VersionForOrvane.h"

bool VersionForOrvane::m_inOpen = false;

void VersionForOrvane::beforeOpen() {
    m_inOpen = true;
}

void VersionForOrvane::afterOpen() {
    m_inOpen = false;
}

bool VersionForOrvane::canChangeView() {
    return true;
}
