// QzXmlLib16.h - includes every public header of the library.
//
// Applications may include this one header, or the headers of the subsystems they use.
#ifndef QZXML_QZXMLLIB16_H
#define QZXML_QZXMLLIB16_H

// Foundation: failures, locks, character conversion, streams, compression.
#include "foundation/BinaryStream.h"
#include "foundation/ConvertUTF.h"
#include "foundation/CriticalSection.h"
#include "foundation/Encoder.h"
#include "foundation/Exceptions.h"
#include "foundation/InstanceMonitor.h"
#include "foundation/QzZip.h"
#include "foundation/StreamTypes.h"
#include "foundation/StringBuffer.h"
#include "foundation/TextStream.h"

// Primitive values.
#include "values/BigInteger.h"
#include "values/BinaryData.h"
#include "values/Conversions.h"
#include "values/DateTime.h"
#include "values/DateTimeSpan.h"
#include "values/Decimal.h"
#include "values/ItemType.h"
#include "values/QzVariant.h"
#include "values/WhitespaceUtils.h"

// Document tree and XML text reading.
#include "tree/ExpatReader.h"
#include "tree/NamespaceAliasMap.h"
#include "tree/XmlAttribute.h"
#include "tree/XmlDocument.h"
#include "tree/XmlElement.h"

// Output writers.
#include "writers/XmlTextWriter.h"
#include "writers/XmlWriter.h"

// Binding core.
#include "binding/SerializationContext.h"
#include "binding/SmartPtr.h"
#include "binding/XmlObjectBase.h"

// Fast Infoset.
#include "fastinfoset/FInfoDecl.h"

#endif
