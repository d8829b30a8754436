// FInfoDecl.h - which XML declaration a Fast Infoset document starts with.
// 0 writes none; 1 to 9 select the entries of the declaration list.
#ifndef QZXML_FASTINFOSET_FINFODECL_H
#define QZXML_FASTINFOSET_FINFODECL_H

namespace QzXmlLib16 {

enum FInfoDecl {
    FInfoDeclNone = 0,
    FInfoDeclEncoding = 1,
    FInfoDeclEncodingStandaloneYes = 2,
    FInfoDeclEncodingStandaloneNo = 3,
    FInfoDeclVersion10 = 4,
    FInfoDeclVersion10StandaloneYes = 5,
    FInfoDeclVersion10StandaloneNo = 6,
    FInfoDeclVersion11 = 7,
    FInfoDeclVersion11StandaloneYes = 8,
    FInfoDeclVersion11StandaloneNo = 9
};

} // namespace QzXmlLib16

#endif
