// QzVariant.h - QzVariant, the tagged value of any ItemType with a nil marker.
//
// Member values cross between text, generated classes and the facet checks in this form.
// The item numbers are in values/ItemType.h, the text forms in values/Conversions.h; objects
// and collections are the reference-counted classes of binding/XmlObjectBase.h.
#ifndef QZXML_VALUES_QZVARIANT_H
#define QZXML_VALUES_QZVARIANT_H

#include "binding/SmartPtr.h"
#include "values/Conversions.h"
#include "values/ItemType.h"

#include <cstdint>
#include <string>

namespace QzXmlLib16 {

class CXmlObjectBase;
class CXmlCollectionBase;

// Three states: unset (type 0, not nil), holding a value (type set, not nil) and nil (nil flag
// set, type kept, no value). Owned values (binary, dates, duration, string, decimal, integer)
// are deep-copied with the variant; a CBinaryData copy shares its bytes until one side writes.
// Objects and collections are shared by reference count.
class QzVariant {
public:
    // Unset: not nil, type 0, value 0.
    QzVariant();
    // A copy as by operator=.
    QzVariant(const QzVariant& other);
    virtual ~QzVariant();

    // Clear, then take the other's type, nil flag and a copy of its value (a new owned object,
    // or one more reference on an object or collection). A nil source gives a nil variant of
    // its type, whatever the number. Throws CQzException "Unknown Type" for a source that is
    // not nil and holds a type above 28; the variant is then left unset.
    // Note: Clear comes first and there is no self-assignment guard, so a variant assigned to
    // itself loses its value and ends unset.
    QzVariant& operator=(const QzVariant& other);

    // Drops the value (deleting an owned object, releasing an object or collection) and makes
    // the variant unset. Note: on type 0 nothing happens, so a nil flag set on an unset variant
    // stays.
    void Clear();

    // True if the type is not 0 or the nil flag is set.
    bool IsValid() const;
    // Clear, then type 0.
    void SetInvalid();
    // Drops the value but keeps the type, and sets the nil flag.
    void SetNil();
    bool IsNil() const;

    // The item type as stored (also for a nil variant).
    ItemType GetItemType() const { return m_eType; }
    // The type's name ("hexBinary", "i4", "datetime", ...). Throws CQzException
    // "Invalid Type %d" for types outside 1 to 26 (so also for objects and collections).
    std::string GetType() const;

    // The value as text; `format` (null counts as "") reaches only r4, r8 and decimal, see
    // CConversions. The nil flag is not consulted: a nil scalar writes its zero value, a nil
    // owned value throws as its getter does. Throws CQzException "Invalid Type %d to convert
    // to string" for type 0 and types above 26.
    std::string ToString(const char* format = nullptr) const;
    // Reads `text` as item `type` under `rule` and stores it with the matching setter. Parser
    // failures pass through and leave the variant as it was. Throws CQzException "Invalid Type
    // %d to convert to string" for a type outside 1 to 26.
    // Note: the %d in that message is the variant's present type, not the type asked for.
    void FromString(const std::string& text, ItemType type, CWhitespaceUtils::WhitespaceRule rule);

    // Clear, then type 27 holding `object`, with one more reference if it is not null.
    void SetXmlObject(CXmlObjectBase* object);
    // A new reference on the held object; null for a null object and for an unset variant.
    // Needs binding/XmlObjectBase.h where the result is used. Throws CQzInvalidStateException
    // "Invalid Type %d to read as CXmlObjectBase" when the variant holds a primitive.
    CSmartPtr<CXmlObjectBase> GetXmlObject() const;
    // Clear, then type 28 holding `collection`, with one more reference if it is not null.
    // Collections count their references through CXmlObjectBase, so the collection's class
    // must be complete where this is called (include its header).
    // Any class derived from CXmlCollectionBase is taken as it is, and so is a smart pointer
    // to one.
    template <class TCollection = CXmlCollectionBase> void SetXmlCollection(TCollection* collection) {
        SetCounted(ItemXmlCollection, static_cast<CXmlObjectBase*>(collection));
    }
    template <class TCollection> void SetXmlCollection(const CSmartPtr<TCollection>& collection) {
        SetXmlCollection(collection.Get());
    }
    void SetXmlCollection(decltype(nullptr)) { SetCounted(ItemXmlCollection, nullptr); }
    // A new reference on the held collection (CSmartPtr<CXmlCollectionBase> unless another
    // collection class is named), null as with GetXmlObject and also when the held object is
    // not of that class; as above, the class must be complete where this is called. Throws as
    // GetXmlObject.
    template <class TCollection = CXmlCollectionBase> CSmartPtr<TCollection> GetXmlCollection() const {
        return CSmartPtr<TCollection>(dynamic_cast<TCollection*>(GetCounted()));
    }

    // One setter and getter per primitive. Each setter clears the variant and stores a new
    // value (owned objects are copied in). Scalar getters read the value slot as the asked
    // type without testing the stored type, so reading another kind reinterprets its bytes.
    // Getters of owned values return a copy; they throw CQzInvalidStateException
    // "Invalid Type %d to read as %s" when the variant holds no object of that class, and
    // "Nil value of type %d can not be read" when it is nil.
    void SetHexBinary(const CBinaryData& value);
    CBinaryData GetHexBinary() const;
    void SetBase64Binary(const CBinaryData& value);
    CBinaryData GetBase64Binary() const;
    void SetI1(char value);
    char GetI1() const;
    void SetI2(short value);
    short GetI2() const;
    void SetI4(int32_t value);
    int32_t GetI4() const;
    void SetI8(long long value);
    long long GetI8() const;
    void SetUI1(unsigned char value);
    unsigned char GetUI1() const;
    void SetUI2(unsigned short value);
    unsigned short GetUI2() const;
    void SetUI4(uint32_t value);
    uint32_t GetUI4() const;
    void SetUI8(unsigned long long value);
    unsigned long long GetUI8() const;
    void SetR4(float value);
    float GetR4() const;
    void SetR8(double value);
    double GetR8() const;
    void SetDuration(const CDateTimeSpan& value);
    CDateTimeSpan GetDuration() const;
    void SetYearMonth(const CDateTime& value);
    CDateTime GetYearMonth() const;
    void SetMonthDay(const CDateTime& value);
    CDateTime GetMonthDay() const;
    void SetYear(unsigned short value);
    unsigned short GetYear() const;
    void SetMonth(unsigned char value);
    unsigned char GetMonth() const;
    void SetDay(unsigned char value);
    unsigned char GetDay() const;
    void SetDate(const CDateTime& value);
    CDateTime GetDate() const;
    void SetDateTime(const CDateTime& value);
    CDateTime GetDateTime() const;
    void SetTime(const CDateTime& value);
    CDateTime GetTime() const;
    void SetChar(char value);
    char GetChar() const;
    void SetString(std::string value);
    std::string GetString() const;
    void SetBoolean(bool value);
    bool GetBoolean() const;
    void SetDecimal(const CDecimal& value);
    CDecimal GetDecimal() const;
    void SetInteger(const CBigInteger& value);
    CBigInteger GetInteger() const;

protected:
    // The scalar bytes, or the pointer of an owned or counted value. Bytes beyond a scalar's
    // width are zero.
    union Value {
        unsigned char bytes[8];
        CBinaryData* pBinary;
        CDateTimeSpan* pSpan;
        CDateTime* pDateTime;
        std::string* pString;
        CDecimal* pDecimal;
        CBigInteger* pInteger;
        CXmlObjectBase* pObject;
    };
    static_assert(sizeof(Value) == 8, "the value slot is eight bytes");

    bool m_bIsNil;
    ItemType m_eType;
    Value m_value;

private:
    // The object or collection held (borrowed), null for none; throws for a primitive.
    CXmlObjectBase* GetCounted() const;
    // Clear, then `type` holding `object` with one more reference.
    void SetCounted(ItemType type, CXmlObjectBase* object);
    // Clear, then `type` holding the `size` bytes at `data`.
    void SetScalar(ItemType type, const void* data, size_t size);
    // The first `size` bytes of the slot copied to `out`.
    void GetScalar(void* out, size_t size) const;
    // Throws unless the stored type holds a live object of the class `kind` names.
    void CheckOwned(int kind, const char* name) const;
};

} // namespace QzXmlLib16

#endif
