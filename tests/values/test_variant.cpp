// Tests of QzVariant: its three states, the setters and getters of every item type, copying
// (deep for owned values, shared bytes for binary, counted for objects and collections), the
// text operations and their messages, and the behaviours kept on purpose.
#include "values/QzVariant.h"

#include "binding/XmlObjectBase.h"
#include "foundation/Exceptions.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>
#include "support/TestSupport.h"

using namespace QzXmlLib16;

namespace {

using QzTest::MessageOf;

// A reference-counted object that reports its own destruction.
class CountedObject : public CXmlObjectBase {
public:
    explicit CountedObject(bool* destroyed) : m_destroyed(destroyed) {}
    ~CountedObject() override { *m_destroyed = true; }
    CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override { return ""; }
    std::string GetNamespace() const override { return ""; }
    // The present count, read through a pair of AddRef and Release.
    int32_t Count() {
        int32_t count = AddRef() - 1;
        Release();
        return count;
    }

protected:
    void ToXml_Int(CXmlWriter*, bool, const char*, const CSerializationContext&, bool) const override {}
    CXmlElement* FromXml_Int(CXmlElement*, CXmlElement* firstChild, const CSerializationContext&,
                             bool) override {
        return firstChild;
    }

private:
    bool* m_destroyed;
};

// Stands in for a collection: a second class behind CXmlObjectBase, so the collection setter
// and getter convert through it.
class CountedCollection : public CountedObject {
public:
    using CountedObject::CountedObject;
};

// A variant whose stored type can be forced outside the table.
class RawVariant : public QzVariant {
public:
    void ForceType(int type) { m_eType = static_cast<ItemType>(type); }
};

const CWhitespaceUtils::WhitespaceRule kCollapse = CWhitespaceUtils::Collapse;

} // namespace

// ---- states ------------------------------------------------------------------------------------

TEST(QzVariantStateTest, FreshVariantIsUnset) {
    QzVariant v;
    EXPECT_FALSE(v.IsValid());
    EXPECT_FALSE(v.IsNil());
    EXPECT_EQ(ItemInvalid, v.GetItemType());
    EXPECT_EQ("Invalid Type 0 to convert to string", MessageOf<CQzException>([&] { v.ToString(nullptr); }));
    EXPECT_EQ("Invalid Type 0", MessageOf<CQzException>([&] { v.GetType(); }));
}

TEST(QzVariantStateTest, SetNilKeepsTheTypeAndDropsTheValue) {
    QzVariant v;
    v.SetI4(5);
    v.SetNil();
    EXPECT_TRUE(v.IsValid());
    EXPECT_TRUE(v.IsNil());
    EXPECT_EQ(ItemI4, v.GetItemType());
    EXPECT_EQ("i4", v.GetType());
    EXPECT_EQ(0, v.GetI4());
    // The nil flag is not consulted by ToString: a scalar writes its zero, an owned value fails.
    EXPECT_EQ("0", v.ToString(nullptr));
    v.SetString("text");
    v.SetNil();
    EXPECT_EQ("Nil value of type 23 can not be read",
              MessageOf<CQzInvalidStateException>([&] { v.ToString(nullptr); }));
    // A setter leaves nil behind.
    v.SetBoolean(true);
    EXPECT_FALSE(v.IsNil());
    EXPECT_TRUE(v.GetBoolean());
}

// Note: Clear does nothing on type 0, so a nil flag set on an unset variant survives it.
TEST(QzVariantStateTest, ClearOnUnsetVariantKeepsNilFlag) {
    QzVariant v;
    v.SetNil();
    EXPECT_TRUE(v.IsNil());
    EXPECT_TRUE(v.IsValid());
    EXPECT_EQ(ItemInvalid, v.GetItemType());
    v.Clear();
    EXPECT_TRUE(v.IsNil());
    EXPECT_TRUE(v.IsValid());
    // With a type, Clear drops the flag.
    v.SetI2(1);
    v.SetNil();
    v.Clear();
    EXPECT_FALSE(v.IsNil());
    EXPECT_FALSE(v.IsValid());
}

TEST(QzVariantStateTest, SetInvalidMakesTheVariantUnset) {
    QzVariant v;
    v.SetDecimal(CDecimal("1.5"));
    v.SetInvalid();
    EXPECT_FALSE(v.IsValid());
    EXPECT_EQ(ItemInvalid, v.GetItemType());
    v.SetR8(2.0);
    v.SetNil();
    v.SetInvalid();
    EXPECT_FALSE(v.IsNil());
    EXPECT_FALSE(v.IsValid());
}

// ---- every item type -----------------------------------------------------------------------------

// Each setter stores its type, GetType names it, the getter reads it back, ToString writes it.
TEST(QzVariantTypeTest, EverySetterGetterAndName) {
    struct Row {
        ItemType type;
        const char* name;
        const char* text;
        std::function<void(QzVariant&)> set;
        std::function<bool(const QzVariant&)> check;
    };
    CBinaryData bytes(reinterpret_cast<unsigned char*>(const_cast<char*>("\x01\x02\xff")), 3, false);
// A row whose setter and getter share a name and whose getter gives back the value set.
#define SIMPLE(type, name, text, Suffix, value)                                                              \
    {                                                                                                        \
        type, name, text, [&](QzVariant& v) { v.Set##Suffix(value); },                                       \
            [&](const QzVariant& v) { return v.Get##Suffix() == (value); }                                   \
    }
    const char minI1 = static_cast<char>(-128);
    const double minusInf = -std::numeric_limits<double>::infinity();
    // clang-format off
    const Row rows[] = {
        SIMPLE(ItemHexBinary, "hexBinary", "0102FF", HexBinary, bytes),
        SIMPLE(ItemBase64Binary, "base64Binary", "AQL/", Base64Binary, bytes),
        SIMPLE(ItemI1, "i1", "-128", I1, minI1), SIMPLE(ItemI2, "i2", "-32768", I2, -32768),
        SIMPLE(ItemI4, "i4", "-2147483648", I4, std::numeric_limits<int32_t>::min()),
        SIMPLE(ItemI8, "i8", "9223372036854775807", I8, std::numeric_limits<long long>::max()),
        SIMPLE(ItemUI1, "ui1", "255", UI1, 255), SIMPLE(ItemUI2, "ui2", "65535", UI2, 65535),
        SIMPLE(ItemUI4, "ui4", "4294967295", UI4, 4294967295u),
        SIMPLE(ItemUI8, "ui8", "18446744073709551615", UI8, 18446744073709551615ull),
        SIMPLE(ItemR4, "r4", "0.1", R4, 0.1f), SIMPLE(ItemR8, "r8", "-INF", R8, minusInf),
        {ItemDuration, "duration", "-P1DT2H",
         [](QzVariant& v) { v.SetDuration(CConversions::durationFromString("-P1DT2H", kCollapse)); },
         [](const QzVariant& v) { return v.GetDuration().ToString() == "-P1DT2H"; }},
        {ItemYearMonth, "yearMonth", "2004-05",
         [](QzVariant& v) { CDateTime d; d.SetGYearMonth(2004, 5); v.SetYearMonth(d); },
         [](const QzVariant& v) { return v.GetYearMonth().GetMonth() == 5; }},
        {ItemMonthDay, "monthDay", "--05-06",
         [](QzVariant& v) { CDateTime d; d.SetGMonthDay(5, 6); v.SetMonthDay(d); },
         [](const QzVariant& v) { return v.GetMonthDay().GetDay() == 6; }},
        SIMPLE(ItemYear, "year", "2004", Year, 2004), SIMPLE(ItemMonth, "month", "--12", Month, 12),
        SIMPLE(ItemDay, "day", "---31", Day, 31),
        SIMPLE(ItemDate, "date", "2004-02-29", Date, CDateTime(2004, 2, 29)),
        {ItemDateTime, "datetime", "2004-02-29T23:59:59",
         [](QzVariant& v) { v.SetDateTime(CDateTime(2004, 2, 29, 23, 59, 59)); },
         [](const QzVariant& v) { return v.GetDateTime().GetSecond() == 59; }},
        {ItemTime, "time", "23:59:59.000000001Z",
         [](QzVariant& v) { v.SetTime(CConversions::timeFromString("23:59:59.000000001Z", kCollapse)); },
         [](const QzVariant& v) { return v.GetTime().GetNanoSecond() == 1; }},
        SIMPLE(ItemChar, "char", "~", Char, '~'), SIMPLE(ItemString, "string", " a\tb ", String, " a\tb "),
        SIMPLE(ItemBoolean, "boolean", "false", Boolean, false),
        SIMPLE(ItemDecimal, "decimal", "-0.05", Decimal, CDecimal("-0.050")),
        SIMPLE(ItemInteger, "integer", "-99999999999999999999999", Integer,
               CBigInteger("-99999999999999999999999"))};
    // clang-format on
#undef SIMPLE
    ASSERT_EQ(26u, sizeof(rows) / sizeof(rows[0]));
    QzVariant previous;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        QzVariant v;
        // Each setter replaces what the variant held before, whatever its kind.
        v = previous;
        row.set(v);
        EXPECT_EQ(row.type, v.GetItemType());
        EXPECT_EQ(row.name, v.GetType());
        EXPECT_TRUE(v.IsValid());
        EXPECT_FALSE(v.IsNil());
        EXPECT_TRUE(row.check(v));
        EXPECT_EQ(row.text, v.ToString(nullptr));
        EXPECT_EQ(row.text, v.ToString(""));
        previous = v;
    }
}

// ---- copying ---------------------------------------------------------------------------------------

TEST(QzVariantCopyTest, NilCopiesAsNilOfTheSameType) {
    QzVariant source;
    source.SetDate(CDateTime(2000, 1, 1));
    source.SetNil();
    QzVariant copy(source);
    EXPECT_TRUE(copy.IsNil());
    EXPECT_EQ(ItemDate, copy.GetItemType());
    EXPECT_EQ("Nil value of type 19 can not be read",
              MessageOf<CQzInvalidStateException>([&] { copy.GetDate(); }));
    QzVariant unsetNil;
    unsetNil.SetNil();
    QzVariant copy2;
    copy2 = unsetNil;
    EXPECT_TRUE(copy2.IsNil());
    EXPECT_EQ(ItemInvalid, copy2.GetItemType());
}

// Owned values are deep copies: the copy outlives its source and changing one leaves the other.
TEST(QzVariantCopyTest, OwnedValuesAreDeepCopied) {
    QzVariant copy;
    {
        QzVariant source;
        source.SetString("abc");
        copy = source;
        source.SetString("xyz");
        EXPECT_EQ("xyz", source.GetString());
    }
    EXPECT_EQ("abc", copy.GetString());
    QzVariant decimalCopy;
    {
        QzVariant source;
        source.SetDecimal(CDecimal("123.456"));
        decimalCopy = QzVariant(source);
    }
    EXPECT_EQ("123.456", decimalCopy.ToString(nullptr));
    QzVariant spanCopy;
    {
        QzVariant source;
        source.SetDuration(CConversions::durationFromString("P2Y", CWhitespaceUtils::None));
        spanCopy = source;
    }
    EXPECT_EQ("P2Y", spanCopy.ToString(nullptr));
}

// Binary copies share the bytes; a handle taken out detaches when it is written.
TEST(QzVariantCopyTest, BinaryCopiesShareBytesUntilOneSideWrites) {
    QzVariant source;
    source.SetBase64Binary(CBinaryData("hello"));
    QzVariant copy(source);
    EXPECT_EQ(source.GetBase64Binary().GetData(), copy.GetBase64Binary().GetData());
    CBinaryData taken = copy.GetBase64Binary();
    taken.Append("!");
    EXPECT_NE(taken.GetData(), copy.GetBase64Binary().GetData());
    EXPECT_EQ("aGVsbG8=", copy.ToString(nullptr));
    EXPECT_EQ("aGVsbG8h", CConversions::base64BinaryToString(taken));
    // The variant holds its own handle: changing the handle it was set from does not reach it.
    CBinaryData original("ab");
    QzVariant held;
    held.SetHexBinary(original);
    original.Append("c");
    EXPECT_EQ("6162", held.ToString(nullptr));
}

TEST(QzVariantCopyTest, ObjectsAreCountedNotCopied) {
    bool destroyed = false;
    CountedObject* object = new CountedObject(&destroyed);
    {
        QzVariant v;
        v.SetXmlObject(object);
        EXPECT_EQ(ItemXmlObject, v.GetItemType());
        EXPECT_EQ(1, object->Count());
        {
            QzVariant copy(v);
            EXPECT_EQ(2, object->Count());
            CSmartPtr<CXmlObjectBase> held = copy.GetXmlObject();
            EXPECT_EQ(object, held.Get());
            EXPECT_EQ(3, object->Count());
        }
        EXPECT_EQ(1, object->Count());
        // Setting the object the variant already holds keeps it alive.
        v.SetXmlObject(object);
        EXPECT_EQ(1, object->Count());
        EXPECT_FALSE(destroyed);
    }
    // The last reference was the variant's.
    EXPECT_TRUE(destroyed);
}

TEST(QzVariantCopyTest, CollectionsAreCountedThroughTheObjectBase) {
    bool destroyed = false;
    CountedCollection* collection = new CountedCollection(&destroyed);
    QzVariant v;
    v.SetXmlCollection(collection);
    EXPECT_EQ(ItemXmlCollection, v.GetItemType());
    {
        CSmartPtr<CountedCollection> held = v.GetXmlCollection<CountedCollection>();
        EXPECT_EQ(collection, held.Get());
        EXPECT_EQ(2, collection->Count());
    }
    QzVariant other;
    other = v;
    v.SetInvalid();
    EXPECT_FALSE(destroyed);
    other.SetI4(1);
    EXPECT_TRUE(destroyed);
    // A null collection or object is stored as such.
    v.SetXmlCollection(nullptr);
    EXPECT_EQ(ItemXmlCollection, v.GetItemType());
    EXPECT_EQ(nullptr, v.GetXmlCollection<CountedCollection>().Get());
    v.SetXmlObject(nullptr);
    EXPECT_EQ(ItemXmlObject, v.GetItemType());
    EXPECT_EQ(nullptr, v.GetXmlObject().Get());
    QzVariant copy(v);
    EXPECT_EQ(nullptr, copy.GetXmlObject().Get());
}

// Generated code holds its collections in smart pointers and hands them over as they are; the
// getter gives null rather than a wrong class.
TEST(QzVariantCopyTest, CollectionsFromSmartPointersAndOfTheWrongClass) {
    bool destroyed = false;
    {
        CSmartPtr<CountedCollection> owner = new CountedCollection(&destroyed);
        QzVariant v;
        v.SetXmlCollection(owner);
        EXPECT_EQ(ItemXmlCollection, v.GetItemType());
        EXPECT_EQ(2, owner->Count());
        EXPECT_EQ(owner.Get(), v.GetXmlCollection<CountedCollection>().Get());
        // The object getter reads a collection too.
        EXPECT_EQ(owner.Get(), v.GetXmlObject().Get());

        bool objectDestroyed = false;
        v.SetXmlObject(new CountedObject(&objectDestroyed));
        EXPECT_EQ(1, owner->Count());
        EXPECT_EQ(nullptr, v.GetXmlCollection<CountedCollection>().Get());
        v.SetInvalid();
        EXPECT_TRUE(objectDestroyed);
        EXPECT_FALSE(destroyed);
    }
    EXPECT_TRUE(destroyed);
}

// Objects and collections have no name and no text.
TEST(QzVariantCopyTest, ObjectsHaveNoTypeNameOrText) {
    bool destroyed = false;
    QzVariant v;
    v.SetXmlObject(new CountedObject(&destroyed));
    EXPECT_EQ("Invalid Type 27", MessageOf<CQzException>([&] { v.GetType(); }));
    EXPECT_EQ("Invalid Type 27 to convert to string", MessageOf<CQzException>([&] { v.ToString(nullptr); }));
    v.SetXmlCollection(nullptr);
    EXPECT_EQ("Invalid Type 28", MessageOf<CQzException>([&] { v.GetType(); }));
    EXPECT_TRUE(destroyed);
}

// Note: operator= clears before it reads the source and has no guard, so assigning a variant
// to itself leaves it unset.
TEST(QzVariantCopyTest, SelfAssignmentLosesTheValue) {
    QzVariant v;
    v.SetString("gone");
    QzVariant& alias = v;
    v = alias;
    EXPECT_FALSE(v.IsValid());
    EXPECT_EQ(ItemInvalid, v.GetItemType());
    bool destroyed = false;
    v.SetXmlObject(new CountedObject(&destroyed));
    v = alias;
    EXPECT_TRUE(destroyed);
    EXPECT_FALSE(v.IsValid());
}

TEST(QzVariantCopyTest, StoredTypeBeyondTheTableIsUnknown) {
    RawVariant raw;
    raw.ForceType(29);
    QzVariant target;
    target.SetI4(3);
    EXPECT_EQ("Unknown Type", MessageOf<CQzException>([&] { target = raw; }));
    EXPECT_FALSE(target.IsValid());
    // A nil source has no value to copy, so even an unknown type is taken as it is.
    raw.SetNil();
    EXPECT_EQ(29, static_cast<int>(raw.GetItemType()));
    target = raw;
    EXPECT_TRUE(target.IsNil());
    EXPECT_EQ(29, static_cast<int>(target.GetItemType()));
    EXPECT_EQ("Invalid Type 29", MessageOf<CQzException>([&] { target.GetType(); }));
    target.SetI4(1);
    EXPECT_EQ("1", target.ToString());
    EXPECT_EQ("Invalid Type 29", MessageOf<CQzException>([&] { raw.GetType(); }));
    EXPECT_EQ("Invalid Type 29 to convert to string",
              MessageOf<CQzException>([&] { raw.ToString(nullptr); }));
    // Clear only resets the type of such a variant.
    raw.Clear();
    EXPECT_EQ(ItemInvalid, raw.GetItemType());
}

// ---- reading another kind ----------------------------------------------------------------------------

// Scalar getters reinterpret the slot; bytes beyond a scalar's width are zero.
TEST(QzVariantReadTest, ScalarGettersReinterpretTheSlot) {
    QzVariant v;
    v.SetUI1(200);
    EXPECT_EQ(static_cast<char>(-56), v.GetI1());
    EXPECT_EQ(200, v.GetI4());
    EXPECT_TRUE(v.GetBoolean());
    v.SetI8(-1);
    EXPECT_EQ(-1, v.GetI4());
    EXPECT_EQ(65535, v.GetUI2());
    v.SetR4(1.0f);
    EXPECT_EQ(0x3f800000u, v.GetUI4());
}

// Getters of owned values refuse a slot that holds something else instead of following it.
TEST(QzVariantReadTest, OwnedGettersCheckTheStoredClass) {
    QzVariant v;
    v.SetI4(5);
    EXPECT_EQ("Invalid Type 5 to read as string",
              MessageOf<CQzInvalidStateException>([&] { v.GetString(); }));
    EXPECT_EQ("Invalid Type 5 to read as CDecimal",
              MessageOf<CQzInvalidStateException>([&] { v.GetDecimal(); }));
    v.SetString("x");
    EXPECT_EQ("Invalid Type 23 to read as CBinaryData",
              MessageOf<CQzInvalidStateException>([&] { v.GetHexBinary(); }));
    EXPECT_EQ("Invalid Type 23 to read as CDateTime",
              MessageOf<CQzInvalidStateException>([&] { v.GetTime(); }));
    EXPECT_EQ("Invalid Type 23 to read as CDateTimeSpan",
              MessageOf<CQzInvalidStateException>([&] { v.GetDuration(); }));
    EXPECT_EQ("Invalid Type 23 to read as CBigInteger",
              MessageOf<CQzInvalidStateException>([&] { v.GetInteger(); }));
    QzVariant unset;
    EXPECT_EQ("Invalid Type 0 to read as string",
              MessageOf<CQzInvalidStateException>([&] { unset.GetString(); }));
    // An object getter finds no object in an unset variant and refuses a primitive.
    EXPECT_EQ(nullptr, unset.GetXmlObject().Get());
    EXPECT_EQ("Invalid Type 23 to read as CXmlObjectBase",
              MessageOf<CQzInvalidStateException>([&] { v.GetXmlObject(); }));
    EXPECT_EQ("Invalid Type 23 to read as CXmlObjectBase",
              MessageOf<CQzInvalidStateException>([&] { v.GetXmlCollection<CountedCollection>(); }));
    // The date-like types share one class, so each of their getters reads any of them.
    v.SetDateTime(CDateTime(2001, 2, 3, 4, 5, 6));
    EXPECT_EQ(3, v.GetDate().GetDay());
    // hexBinary and base64Binary likewise.
    v.SetHexBinary(CBinaryData("A"));
    EXPECT_EQ(1u, v.GetBase64Binary().GetLength());
}

// ---- text ------------------------------------------------------------------------------------------

TEST(QzVariantTextTest, FormatReachesRealsAndDecimalOnly) {
    QzVariant v;
    v.SetR8(3.14159);
    EXPECT_EQ("3.14", v.ToString("%.2f"));
    EXPECT_EQ("3.14159", v.ToString(nullptr));
    v.SetR4(2.5f);
    EXPECT_EQ("2.500", v.ToString("%.3f"));
    v.SetDecimal(CDecimal("2.71828"));
    EXPECT_EQ("2.72", v.ToString("2"));
    v.SetI4(42);
    EXPECT_EQ("42", v.ToString("%.2f"));
    v.SetDate(CDateTime(2004, 5, 6));
    EXPECT_EQ("2004-05-06", v.ToString("G"));
}

TEST(QzVariantTextTest, FromStringStoresWithTheMatchingSetter) {
    QzVariant v;
    v.FromString("12", ItemI1, kCollapse);
    EXPECT_EQ(ItemI1, v.GetItemType());
    EXPECT_EQ(12, v.GetI1());
    v.FromString(" 2004-05-06 ", ItemYearMonth, kCollapse);
    EXPECT_EQ(ItemYearMonth, v.GetItemType());
    EXPECT_EQ(CDateTime::dt_date, v.GetYearMonth().GetType());
    v.FromString("\t yes, a string ", ItemString, CWhitespaceUtils::Replace);
    EXPECT_EQ("  yes, a string ", v.GetString());
    v.SetNil();
    v.FromString("TRUE", ItemBoolean, kCollapse);
    EXPECT_FALSE(v.IsNil());
    EXPECT_TRUE(v.GetBoolean());
}

// A parser failure passes through and leaves the previous value in place.
TEST(QzVariantTextTest, FailedFromStringKeepsThePreviousValue) {
    QzVariant v;
    v.SetString("kept");
    EXPECT_EQ("The value [300] is to large to fit in a i1",
              MessageOf<CQzInvalidValueException>([&] { v.FromString("300", ItemI1, kCollapse); }));
    EXPECT_EQ(ItemString, v.GetItemType());
    EXPECT_EQ("kept", v.GetString());
    EXPECT_THROW(v.FromString("2004-13-01", ItemDate, kCollapse), CQzInvalidValueException);
    EXPECT_EQ("kept", v.GetString());
}

// Note: the message of a refused type shows the variant's present type, not the one asked for.
TEST(QzVariantTextTest, FromStringOfNonPrimitiveTypeNamesThePresentType) {
    QzVariant v;
    EXPECT_EQ("Invalid Type 0 to convert to string",
              MessageOf<CQzException>([&] { v.FromString("x", ItemXmlObject, kCollapse); }));
    v.SetI4(7);
    EXPECT_EQ("Invalid Type 5 to convert to string",
              MessageOf<CQzException>([&] { v.FromString("x", ItemInvalid, kCollapse); }));
    EXPECT_EQ("Invalid Type 5 to convert to string",
              MessageOf<CQzException>([&] { v.FromString("x", static_cast<ItemType>(99), kCollapse); }));
    EXPECT_EQ(7, v.GetI4());
}
