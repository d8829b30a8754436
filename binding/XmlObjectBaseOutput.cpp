// XmlObjectBaseOutput.cpp - the To* operations of CXmlObjectBase: XML text to a string, to
// encoded (and compressed) bytes, and to a file; the AsyncToXmlFile switch.
#include "binding/XmlObjectBase.h"

#include "foundation/BinaryStream.h"
#include "foundation/Exceptions.h"
#include "foundation/QzZip.h"
#include "foundation/TextStream.h"
#include "values/BinaryData.h"
#include "writers/XmlTextWriter.h"

namespace QzXmlLib16 {

namespace {

// Messages
const char* const kMsgZlibToFile = "ZLIB Compression only available for To Stream methods.";

// Process-wide switch of the direct file branch of ToXmlFile; plain, set at start-up.
bool ASYNC_TOXMLFILE = false;

// Document output

// Opens the writer, applies the options in a fixed order, writes the declaration if asked
// and the object as document element, and closes the writer (and with it the stream).
void WriteXmlDocument(const CXmlObjectBase& object, CXmlTextWriter& writer, bool decl, bool format,
                      EOLType eol, const CSerializationContext& context) {
    writer.Open();
    writer.SetFormat(format);
    writer.SetIndentChars(context.GetIndentChars().c_str());
    writer.SetEOLType(eol);
    writer.SetWriteDefaultElementValues(context.GetWriteDefaultElementValues());
    if (decl)
        writer.WriteStartDocument();
    const std::string targetNamespace = object.GetTargetNamespace();
    CXmlObjectBase::ToXml_Int(&object, &writer, true, targetNamespace.c_str(), context, false);
    writer.Close();
}

// Encodings whose files begin with the 0xFF 0xFE mark.
bool HasByteOrderMark(XmlEncoding encoding) {
    return encoding == EncodingUTF16 || encoding == EncodingUnicode;
}

// Operations whose writer has not joined the library yet report that.
[[noreturn]] void ThrowNotAvailable(const char* operation) {
    throw CQzException(FormatString("%s is not available in this build", operation));
}

} // namespace

void AsyncToXmlFile(bool async) {
    ASYNC_TOXMLFILE = async;
}

std::string CXmlObjectBase::ToXml(bool decl, bool format, EOLType eol,
                                  const CSerializationContext& context) const {
    CTextStream stream;
    CXmlTextWriter writer(stream);
    WriteXmlDocument(*this, writer, decl, format, eol, context);
    const char* text = stream.GetText();
    return std::string(text, stream.GetLength());
}

CBinaryData CXmlObjectBase::ToXmlStream(bool decl, bool format, XmlEncoding encoding, EOLType eol,
                                        const CSerializationContext& context,
                                        CompressionType compression) const {
    CTextStream stream(encoding);
    CXmlTextWriter writer(stream);
    WriteXmlDocument(*this, writer, decl, format, eol, context);
    CBinaryData result = stream.GetEncodedStream();
    if (compression != CompressionNone)
        CQzZip::CompressData(result, compression);
    return result;
}

void CXmlObjectBase::ToXmlFile(const char* path, bool decl, bool format, XmlEncoding encoding, EOLType eol,
                               const CSerializationContext& context, CompressionType compression) const {
    if (compression == CompressionZlib)
        throw CQzException(kMsgZlibToFile);
    if (!ASYNC_TOXMLFILE || compression != CompressionNone) {
        // Buffered: the file is opened only once the whole document exists, so a failed
        // serialisation leaves an existing file untouched.
        XmlEncoding fileEncoding = encoding;
        CBinaryData data;
        if (compression != CompressionNone && HasByteOrderMark(encoding)) {
            // The byte-order mark belongs to the text: it goes inside the compressed bytes,
            // so the file inflates to exactly what the uncompressed file would hold, and no
            // mark stands in front of the gzip member where the reader would not find it.
            unsigned char mark[] = {0xFF, 0xFE};
            data.Append(mark, sizeof(mark));
            data.Append(ToXmlStream(decl, format, encoding, eol, context, CompressionNone));
            CQzZip::CompressData(data, compression);
            fileEncoding = EncodingUTF8;
        } else {
            data = ToXmlStream(decl, format, encoding, eol, context, compression);
        }
        CFileBinaryStream file(path, fileEncoding, data);
        file.ToFile();
        return;
    }
    // Direct: the text goes to the file as it is written; a failure leaves a partial file.
    CFileTextStream stream(path, encoding);
    CXmlTextWriter writer(stream);
    WriteXmlDocument(*this, writer, decl, format, eol, context);
}

// ---------------------------------------------------------------------------
// Fast Infoset and JSON output join with their writers.

void CXmlObjectBase::ToFastInfosetFile(const char*, FInfoDecl, const CSerializationContext&,
                                       CompressionType) const {
    ThrowNotAvailable("ToFastInfosetFile");
}

void CXmlObjectBase::ToJsonFile(const char*, bool, XmlEncoding, EOLType, const CSerializationContext&,
                                CompressionType) const {
    ThrowNotAvailable("ToJsonFile");
}

std::string CXmlObjectBase::ToJson(bool, EOLType, const CSerializationContext&) const {
    ThrowNotAvailable("ToJson");
}

CBinaryData CXmlObjectBase::ToFastInfosetStream(FInfoDecl, const CSerializationContext&,
                                                CompressionType) const {
    ThrowNotAvailable("ToFastInfosetStream");
}

CBinaryData CXmlObjectBase::ToJsonStream(bool, XmlEncoding, EOLType, const CSerializationContext&,
                                         CompressionType) const {
    ThrowNotAvailable("ToJsonStream");
}

} // namespace QzXmlLib16
