// ItemType.h - the numbered vocabulary of primitive item types.
//
// Generated meta-data, collections, Fast Infoset and JSON address a primitive by these
// numbers; values/QzVariant.h holds a value of any of them, values/Conversions.h reads and
// writes their text.
#ifndef QZXML_VALUES_ITEMTYPE_H
#define QZXML_VALUES_ITEMTYPE_H

namespace QzXmlLib16 {

// The numbers are fixed: generated code and stored meta-data use them directly. The type is
// int-based, so any number a caller stores is a value that the library can refuse by name.
enum ItemType : int {
    ItemInvalid = 0,
    ItemHexBinary = 1,     // CBinaryData
    ItemBase64Binary = 2,  // CBinaryData
    ItemI1 = 3,            // char
    ItemI2 = 4,            // short
    ItemI4 = 5,            // 32-bit signed
    ItemI8 = 6,            // long long
    ItemUI1 = 7,           // unsigned char
    ItemUI2 = 8,           // unsigned short
    ItemUI4 = 9,           // 32-bit unsigned
    ItemUI8 = 10,          // unsigned long long
    ItemR4 = 11,           // float
    ItemR8 = 12,           // double
    ItemDuration = 13,     // CDateTimeSpan
    ItemYearMonth = 14,    // CDateTime
    ItemMonthDay = 15,     // CDateTime
    ItemYear = 16,         // unsigned short, a bare year number
    ItemMonth = 17,        // unsigned char, a bare month number
    ItemDay = 18,          // unsigned char, a bare day number
    ItemDate = 19,         // CDateTime
    ItemDateTime = 20,     // CDateTime
    ItemTime = 21,         // CDateTime
    ItemChar = 22,         // char
    ItemString = 23,       // std::string
    ItemBoolean = 24,      // bool
    ItemDecimal = 25,      // CDecimal
    ItemInteger = 26,      // CBigInteger
    ItemXmlObject = 27,    // CXmlObjectBase, reference counted
    ItemXmlCollection = 28 // CXmlCollectionBase, reference counted
};

} // namespace QzXmlLib16

#endif
