// QzVariant.cpp - the tagged value. One table, indexed by item type, says how each type is
// stored, copied, named and converted; the operations below only walk it.
#include "values/QzVariant.h"

#include "binding/XmlObjectBase.h"
#include "foundation/Exceptions.h"

#include <cstring>

namespace QzXmlLib16 {

namespace {

// Item type table

// How the value slot holds a type.
enum StorageKind {
    kindNone,     // type 0: nothing
    kindScalar,   // `size` bytes in the slot
    kindBinary,   // owned CBinaryData
    kindSpan,     // owned CDateTimeSpan
    kindDateTime, // owned CDateTime
    kindString,   // owned std::string
    kindDecimal,  // owned CDecimal
    kindInteger,  // owned CBigInteger
    kindCounted   // CXmlObjectBase with a reference
};

typedef std::string (*ToTextFn)(const QzVariant& variant, const std::string& format);
typedef void (*FromTextFn)(QzVariant& variant, const std::string& text,
                           CWhitespaceUtils::WhitespaceRule rule);

struct TypeEntry {
    const char* name; // what GetType returns; null where it raises
    StorageKind kind;
    unsigned char size; // bytes of a scalar
    ToTextFn toText;
    FromTextFn fromText;
};

typedef CWhitespaceUtils::WhitespaceRule Rule;

// clang-format off
const TypeEntry kTypes[] = {
    {nullptr, kindNone, 0, nullptr, nullptr},
    {"hexBinary", kindBinary, 0,
     [](const QzVariant& v, const std::string&) { return CConversions::hexBinaryToString(v.GetHexBinary()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetHexBinary(CConversions::hexBinaryFromString(t, r)); }},
    {"base64Binary", kindBinary, 0,
     [](const QzVariant& v, const std::string&) { return CConversions::base64BinaryToString(v.GetBase64Binary()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetBase64Binary(CConversions::base64BinaryFromString(t, r)); }},
    {"i1", kindScalar, 1,
     [](const QzVariant& v, const std::string&) { return CConversions::i1ToString(v.GetI1()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetI1(CConversions::i1FromString(t, r)); }},
    {"i2", kindScalar, 2,
     [](const QzVariant& v, const std::string&) { return CConversions::i2ToString(v.GetI2()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetI2(CConversions::i2FromString(t, r)); }},
    {"i4", kindScalar, 4,
     [](const QzVariant& v, const std::string&) { return CConversions::i4ToString(v.GetI4()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetI4(CConversions::i4FromString(t, r)); }},
    {"i8", kindScalar, 8,
     [](const QzVariant& v, const std::string&) { return CConversions::i8ToString(v.GetI8()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetI8(CConversions::i8FromString(t, r)); }},
    {"ui1", kindScalar, 1,
     [](const QzVariant& v, const std::string&) { return CConversions::ui1ToString(v.GetUI1()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetUI1(CConversions::ui1FromString(t, r)); }},
    {"ui2", kindScalar, 2,
     [](const QzVariant& v, const std::string&) { return CConversions::ui2ToString(v.GetUI2()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetUI2(CConversions::ui2FromString(t, r)); }},
    {"ui4", kindScalar, 4,
     [](const QzVariant& v, const std::string&) { return CConversions::ui4ToString(v.GetUI4()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetUI4(CConversions::ui4FromString(t, r)); }},
    {"ui8", kindScalar, 8,
     [](const QzVariant& v, const std::string&) { return CConversions::ui8ToString(v.GetUI8()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetUI8(CConversions::ui8FromString(t, r)); }},
    {"r4", kindScalar, 4,
     [](const QzVariant& v, const std::string& f) { return CConversions::r4ToString(v.GetR4(), f); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetR4(CConversions::r4FromString(t, r)); }},
    {"r8", kindScalar, 8,
     [](const QzVariant& v, const std::string& f) { return CConversions::r8ToString(v.GetR8(), f); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetR8(CConversions::r8FromString(t, r)); }},
    {"duration", kindSpan, 0,
     [](const QzVariant& v, const std::string&) { return CConversions::durationToString(v.GetDuration()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetDuration(CConversions::durationFromString(t, r)); }},
    {"yearMonth", kindDateTime, 0,
     [](const QzVariant& v, const std::string&) { return CConversions::yearMonthToString(v.GetYearMonth()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetYearMonth(CConversions::yearMonthFromString(t, r)); }},
    {"monthDay", kindDateTime, 0,
     [](const QzVariant& v, const std::string&) { return CConversions::monthDayToString(v.GetMonthDay()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetMonthDay(CConversions::monthDayFromString(t, r)); }},
    {"year", kindScalar, 2,
     [](const QzVariant& v, const std::string&) { return CConversions::yearToString(v.GetYear()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetYear(CConversions::yearFromString(t, r)); }},
    {"month", kindScalar, 1,
     [](const QzVariant& v, const std::string&) { return CConversions::monthToString(v.GetMonth()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetMonth(CConversions::monthFromString(t, r)); }},
    {"day", kindScalar, 1,
     [](const QzVariant& v, const std::string&) { return CConversions::dayToString(v.GetDay()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetDay(CConversions::dayFromString(t, r)); }},
    {"date", kindDateTime, 0,
     [](const QzVariant& v, const std::string&) { return CConversions::dateToString(v.GetDate()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetDate(CConversions::dateFromString(t, r)); }},
    {"datetime", kindDateTime, 0,
     [](const QzVariant& v, const std::string&) { return CConversions::datetimeToString(v.GetDateTime()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetDateTime(CConversions::datetimeFromString(t, r)); }},
    {"time", kindDateTime, 0,
     [](const QzVariant& v, const std::string&) { return CConversions::timeToString(v.GetTime()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetTime(CConversions::timeFromString(t, r)); }},
    {"char", kindScalar, 1,
     [](const QzVariant& v, const std::string&) { return CConversions::charToString(v.GetChar()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetChar(CConversions::charFromString(t, r)); }},
    {"string", kindString, 0,
     [](const QzVariant& v, const std::string&) { return CConversions::stringToString(v.GetString()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetString(CConversions::stringFromString(t, r)); }},
    {"boolean", kindScalar, 1,
     [](const QzVariant& v, const std::string&) { return CConversions::booleanToString(v.GetBoolean()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetBoolean(CConversions::booleanFromString(t, r)); }},
    {"decimal", kindDecimal, 0,
     [](const QzVariant& v, const std::string& f) { return CConversions::decimalToString(v.GetDecimal(), f); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetDecimal(CConversions::decimalFromString(t, r)); }},
    {"integer", kindInteger, 0,
     [](const QzVariant& v, const std::string&) { return CConversions::integerToString(v.GetInteger()); },
     [](QzVariant& v, const std::string& t, Rule r) { v.SetInteger(CConversions::integerFromString(t, r)); }},
    {nullptr, kindCounted, 0, nullptr, nullptr},
    {nullptr, kindCounted, 0, nullptr, nullptr},
};
// clang-format on

static_assert(sizeof(kTypes) / sizeof(kTypes[0]) == ItemXmlCollection + 1, "one entry per item type");

// The entry of a stored type, or null for a number beyond the table.
const TypeEntry* EntryOf(ItemType type) {
    unsigned index = static_cast<unsigned>(type);
    return index <= static_cast<unsigned>(ItemXmlCollection) ? &kTypes[index] : nullptr;
}

bool IsPrimitive(ItemType type) {
    return type >= ItemHexBinary && type <= ItemInteger;
}

// Slot bytes

// The first sizeof(T) bytes of the slot as a T; memcpy keeps a read of another kind defined.
template <class T> T ReadSlot(const unsigned char* bytes) {
    T value;
    std::memcpy(&value, bytes, sizeof(T));
    return value;
}

} // namespace

// ---- life ----------------------------------------------------------------------------------

QzVariant::QzVariant() : m_bIsNil(false), m_eType(ItemInvalid) {
    std::memset(m_value.bytes, 0, sizeof(m_value));
}

QzVariant::QzVariant(const QzVariant& other) : QzVariant() {
    *this = other;
}

QzVariant::~QzVariant() {
    Clear();
}

void QzVariant::Clear() {
    if (m_eType == ItemInvalid)
        return;
    m_bIsNil = false;
    const TypeEntry* entry = EntryOf(m_eType);
    if (entry == nullptr) {
        // A number beyond the table: what the slot holds is unknown, so it is left alone.
        m_eType = ItemInvalid;
        return;
    }
    // The slot is emptied before the old value goes, so a destructor that reaches back into
    // this variant finds it unset.
    Value old = m_value;
    std::memset(m_value.bytes, 0, sizeof(m_value));
    m_eType = ItemInvalid;
    switch (entry->kind) {
    case kindBinary:
        delete old.pBinary;
        break;
    case kindSpan:
        delete old.pSpan;
        break;
    case kindDateTime:
        delete old.pDateTime;
        break;
    case kindString:
        delete old.pString;
        break;
    case kindDecimal:
        delete old.pDecimal;
        break;
    case kindInteger:
        delete old.pInteger;
        break;
    case kindCounted:
        if (old.pObject)
            old.pObject->Release();
        break;
    case kindNone:
    case kindScalar:
        break;
    }
}

QzVariant& QzVariant::operator=(const QzVariant& other) {
    // Clear first: assigning a variant to itself therefore leaves it unset.
    Clear();
    // A nil source has no value to copy, so its type is taken whatever the number.
    if (other.m_bIsNil) {
        m_eType = other.m_eType;
        m_bIsNil = true;
        return *this;
    }
    const TypeEntry* entry = EntryOf(other.m_eType);
    if (entry == nullptr)
        throw CQzException("Unknown Type");
    // Copy first, then take the type, so a failed copy leaves the variant unset.
    Value copy;
    std::memset(copy.bytes, 0, sizeof(copy));
    switch (entry->kind) {
    case kindNone:
        break;
    case kindScalar:
        std::memcpy(copy.bytes, other.m_value.bytes, entry->size);
        break;
    case kindBinary:
        copy.pBinary = other.m_value.pBinary ? new CBinaryData(*other.m_value.pBinary) : nullptr;
        break;
    case kindSpan:
        copy.pSpan = other.m_value.pSpan ? new CDateTimeSpan(*other.m_value.pSpan) : nullptr;
        break;
    case kindDateTime:
        copy.pDateTime = other.m_value.pDateTime ? new CDateTime(*other.m_value.pDateTime) : nullptr;
        break;
    case kindString:
        copy.pString = other.m_value.pString ? new std::string(*other.m_value.pString) : nullptr;
        break;
    case kindDecimal:
        copy.pDecimal = other.m_value.pDecimal ? new CDecimal(*other.m_value.pDecimal) : nullptr;
        break;
    case kindInteger:
        copy.pInteger = other.m_value.pInteger ? new CBigInteger(*other.m_value.pInteger) : nullptr;
        break;
    case kindCounted:
        copy.pObject = other.m_value.pObject;
        if (copy.pObject)
            copy.pObject->AddRef();
        break;
    }
    m_value = copy;
    m_eType = other.m_eType;
    m_bIsNil = false;
    return *this;
}

// ---- state ---------------------------------------------------------------------------------

bool QzVariant::IsValid() const {
    return m_eType != ItemInvalid || m_bIsNil;
}

void QzVariant::SetInvalid() {
    Clear();
    m_eType = ItemInvalid;
}

void QzVariant::SetNil() {
    ItemType type = m_eType;
    Clear();
    m_eType = type;
    m_bIsNil = true;
}

bool QzVariant::IsNil() const {
    return m_bIsNil;
}

std::string QzVariant::GetType() const {
    if (!IsPrimitive(m_eType))
        throw CQzException(FormatString("Invalid Type %d", static_cast<int>(m_eType)));
    return kTypes[m_eType].name;
}

// ---- text ----------------------------------------------------------------------------------

std::string QzVariant::ToString(const char* format) const {
    if (!IsPrimitive(m_eType))
        throw CQzException(FormatString("Invalid Type %d to convert to string", static_cast<int>(m_eType)));
    return kTypes[m_eType].toText(*this, format ? std::string(format) : std::string());
}

void QzVariant::FromString(const std::string& text, ItemType type, CWhitespaceUtils::WhitespaceRule rule) {
    if (!IsPrimitive(type))
        throw CQzException(FormatString("Invalid Type %d to convert to string", static_cast<int>(m_eType)));
    kTypes[type].fromText(*this, text, rule);
}

// ---- slot access ---------------------------------------------------------------------------

void QzVariant::SetCounted(ItemType type, CXmlObjectBase* object) {
    if (object)
        object->AddRef();
    Clear();
    m_eType = type;
    m_value.pObject = object;
}

void QzVariant::SetScalar(ItemType type, const void* data, size_t size) {
    Clear();
    m_eType = type;
    std::memcpy(m_value.bytes, data, size);
}

void QzVariant::GetScalar(void* out, size_t size) const {
    std::memcpy(out, m_value.bytes, size);
}

void QzVariant::CheckOwned(int kind, const char* name) const {
    const TypeEntry* entry = EntryOf(m_eType);
    if (entry == nullptr || entry->kind != kind)
        throw CQzInvalidStateException(
            FormatString("Invalid Type %d to read as %s", static_cast<int>(m_eType), name));
    unsigned char zero[sizeof(Value)] = {};
    if (std::memcmp(m_value.bytes, zero, sizeof(Value)) == 0)
        throw CQzInvalidStateException(
            FormatString("Nil value of type %d can not be read", static_cast<int>(m_eType)));
}

CXmlObjectBase* QzVariant::GetCounted() const {
    const TypeEntry* entry = EntryOf(m_eType);
    if (entry == nullptr || (entry->kind != kindCounted && entry->kind != kindNone))
        throw CQzInvalidStateException(
            FormatString("Invalid Type %d to read as CXmlObjectBase", static_cast<int>(m_eType)));
    return entry->kind == kindCounted ? m_value.pObject : nullptr;
}

CSmartPtr<CXmlObjectBase> QzVariant::GetXmlObject() const {
    return CSmartPtr<CXmlObjectBase>(GetCounted());
}

void QzVariant::SetXmlObject(CXmlObjectBase* object) {
    SetCounted(ItemXmlObject, object);
}

// ---- owned values --------------------------------------------------------------------------
// Each setter copies the value before it clears, so a failed copy leaves the variant intact.

void QzVariant::SetHexBinary(const CBinaryData& value) {
    CBinaryData* copy = new CBinaryData(value);
    Clear();
    m_eType = ItemHexBinary;
    m_value.pBinary = copy;
}

CBinaryData QzVariant::GetHexBinary() const {
    CheckOwned(kindBinary, "CBinaryData");
    return *m_value.pBinary;
}

void QzVariant::SetBase64Binary(const CBinaryData& value) {
    CBinaryData* copy = new CBinaryData(value);
    Clear();
    m_eType = ItemBase64Binary;
    m_value.pBinary = copy;
}

CBinaryData QzVariant::GetBase64Binary() const {
    CheckOwned(kindBinary, "CBinaryData");
    return *m_value.pBinary;
}

void QzVariant::SetDuration(const CDateTimeSpan& value) {
    CDateTimeSpan* copy = new CDateTimeSpan(value);
    Clear();
    m_eType = ItemDuration;
    m_value.pSpan = copy;
}

CDateTimeSpan QzVariant::GetDuration() const {
    CheckOwned(kindSpan, "CDateTimeSpan");
    return *m_value.pSpan;
}

void QzVariant::SetYearMonth(const CDateTime& value) {
    CDateTime* copy = new CDateTime(value);
    Clear();
    m_eType = ItemYearMonth;
    m_value.pDateTime = copy;
}

CDateTime QzVariant::GetYearMonth() const {
    CheckOwned(kindDateTime, "CDateTime");
    return *m_value.pDateTime;
}

void QzVariant::SetMonthDay(const CDateTime& value) {
    CDateTime* copy = new CDateTime(value);
    Clear();
    m_eType = ItemMonthDay;
    m_value.pDateTime = copy;
}

CDateTime QzVariant::GetMonthDay() const {
    CheckOwned(kindDateTime, "CDateTime");
    return *m_value.pDateTime;
}

void QzVariant::SetDate(const CDateTime& value) {
    CDateTime* copy = new CDateTime(value);
    Clear();
    m_eType = ItemDate;
    m_value.pDateTime = copy;
}

CDateTime QzVariant::GetDate() const {
    CheckOwned(kindDateTime, "CDateTime");
    return *m_value.pDateTime;
}

void QzVariant::SetDateTime(const CDateTime& value) {
    CDateTime* copy = new CDateTime(value);
    Clear();
    m_eType = ItemDateTime;
    m_value.pDateTime = copy;
}

CDateTime QzVariant::GetDateTime() const {
    CheckOwned(kindDateTime, "CDateTime");
    return *m_value.pDateTime;
}

void QzVariant::SetTime(const CDateTime& value) {
    CDateTime* copy = new CDateTime(value);
    Clear();
    m_eType = ItemTime;
    m_value.pDateTime = copy;
}

CDateTime QzVariant::GetTime() const {
    CheckOwned(kindDateTime, "CDateTime");
    return *m_value.pDateTime;
}

void QzVariant::SetString(std::string value) {
    std::string* copy = new std::string(std::move(value));
    Clear();
    m_eType = ItemString;
    m_value.pString = copy;
}

std::string QzVariant::GetString() const {
    CheckOwned(kindString, "string");
    return *m_value.pString;
}

void QzVariant::SetDecimal(const CDecimal& value) {
    CDecimal* copy = new CDecimal(value);
    Clear();
    m_eType = ItemDecimal;
    m_value.pDecimal = copy;
}

CDecimal QzVariant::GetDecimal() const {
    CheckOwned(kindDecimal, "CDecimal");
    return *m_value.pDecimal;
}

void QzVariant::SetInteger(const CBigInteger& value) {
    CBigInteger* copy = new CBigInteger(value);
    Clear();
    m_eType = ItemInteger;
    m_value.pInteger = copy;
}

CBigInteger QzVariant::GetInteger() const {
    CheckOwned(kindInteger, "CBigInteger");
    return *m_value.pInteger;
}

// ---- scalars -------------------------------------------------------------------------------

void QzVariant::SetI1(char value) {
    SetScalar(ItemI1, &value, 1);
}
void QzVariant::SetI2(short value) {
    SetScalar(ItemI2, &value, 2);
}
void QzVariant::SetI4(int32_t value) {
    SetScalar(ItemI4, &value, 4);
}
void QzVariant::SetI8(long long value) {
    SetScalar(ItemI8, &value, 8);
}
void QzVariant::SetUI1(unsigned char value) {
    SetScalar(ItemUI1, &value, 1);
}
void QzVariant::SetUI2(unsigned short value) {
    SetScalar(ItemUI2, &value, 2);
}
void QzVariant::SetUI4(uint32_t value) {
    SetScalar(ItemUI4, &value, 4);
}
void QzVariant::SetUI8(unsigned long long value) {
    SetScalar(ItemUI8, &value, 8);
}
void QzVariant::SetR4(float value) {
    SetScalar(ItemR4, &value, 4);
}
void QzVariant::SetR8(double value) {
    SetScalar(ItemR8, &value, 8);
}
void QzVariant::SetYear(unsigned short value) {
    SetScalar(ItemYear, &value, 2);
}
void QzVariant::SetMonth(unsigned char value) {
    SetScalar(ItemMonth, &value, 1);
}
void QzVariant::SetDay(unsigned char value) {
    SetScalar(ItemDay, &value, 1);
}
void QzVariant::SetChar(char value) {
    SetScalar(ItemChar, &value, 1);
}

void QzVariant::SetBoolean(bool value) {
    unsigned char byte = value ? 1 : 0;
    SetScalar(ItemBoolean, &byte, 1);
}

char QzVariant::GetI1() const {
    return ReadSlot<char>(m_value.bytes);
}
short QzVariant::GetI2() const {
    return ReadSlot<short>(m_value.bytes);
}
int32_t QzVariant::GetI4() const {
    return ReadSlot<int32_t>(m_value.bytes);
}
long long QzVariant::GetI8() const {
    return ReadSlot<long long>(m_value.bytes);
}
unsigned char QzVariant::GetUI1() const {
    return ReadSlot<unsigned char>(m_value.bytes);
}
unsigned short QzVariant::GetUI2() const {
    return ReadSlot<unsigned short>(m_value.bytes);
}
uint32_t QzVariant::GetUI4() const {
    return ReadSlot<uint32_t>(m_value.bytes);
}
unsigned long long QzVariant::GetUI8() const {
    return ReadSlot<unsigned long long>(m_value.bytes);
}
float QzVariant::GetR4() const {
    return ReadSlot<float>(m_value.bytes);
}
double QzVariant::GetR8() const {
    return ReadSlot<double>(m_value.bytes);
}
unsigned short QzVariant::GetYear() const {
    return ReadSlot<unsigned short>(m_value.bytes);
}
unsigned char QzVariant::GetMonth() const {
    return ReadSlot<unsigned char>(m_value.bytes);
}
unsigned char QzVariant::GetDay() const {
    return ReadSlot<unsigned char>(m_value.bytes);
}
char QzVariant::GetChar() const {
    return ReadSlot<char>(m_value.bytes);
}
// Any non-zero byte reads as true, so a slot written as another type never yields an invalid bool.
bool QzVariant::GetBoolean() const {
    return m_value.bytes[0] != 0;
}

} // namespace QzXmlLib16
