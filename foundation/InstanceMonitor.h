// InstanceMonitor.h - CInstanceMonitor, the empty common base of most library classes.
//
// A hook where a debug build could count live objects by class name. It counts
// nothing: the class name passed in is dropped.
#ifndef QZXML_FOUNDATION_INSTANCEMONITOR_H
#define QZXML_FOUNDATION_INSTANCEMONITOR_H

class CInstanceMonitor {
public:
    // The class name is ignored; null is harmless.
    CInstanceMonitor(const char* className = nullptr) { (void)className; }
    virtual ~CInstanceMonitor() {}
};

#endif
