// KDROSVersion.cpp - the host version record
#include "kdrcore/runtime/KDROSVersion.h"

eKDROSVersion KDROSVersion::m_osVersion = eKDROSUnknown;

KDROSVersion::KDROSVersion() = default;

KDROSVersion::~KDROSVersion() = default;

void KDROSVersion::init(eKDROSVersion version) {
    m_osVersion = version;
}

eKDROSVersion KDROSVersion::getOSVersion() {
    return m_osVersion;
}

bool KDROSVersion::isOS9() {
    return m_osVersion == eKDROS9;
}

bool KDROSVersion::isOSX() {
    return m_osVersion == eKDROSX;
}

bool KDROSVersion::isOSXJaguar() {
    return m_osVersion == eKDROSXJaguar;
}

bool KDROSVersion::isOSXPanther() {
    return m_osVersion == eKDROSXPanther;
}
