// QzXmlLib16.h - includes every public header of the library.
#ifndef QZXML_QZXMLLIB16_H
#define QZXML_QZXMLLIB16_H

#include "foundation/CriticalSection.h"
#include "foundation/Exceptions.h"
#include "foundation/InstanceMonitor.h"

#endif
