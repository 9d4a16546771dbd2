// Readers of packed values: unpack(in, record) reads a record's fields into a zeroed record, in the order in
// which service/packed/values.x has them.  What the reader cannot read makes it fail.
#pragma once

#include "service/packed/values.h"
#include "service/packed/xdr_reader.h"

namespace qvledger {

inline void unpack(XdrReader &in, std::int32_t &number) {
    number = in.integer();
}
inline void unpack(XdrReader &in, std::uint32_t &number) {
    number = in.word();
}
inline void unpack(XdrReader &in, std::int16_t &number) {
    number = in.shortInteger();
}
inline void unpack(XdrReader &in, double &number) {
    number = in.real();
}
void unpack(XdrReader &in, GEN_cardinal64 &value);
void unpack(XdrReader &in, GEN_cardinalOrNoid &value);
void unpack(XdrReader &in, GEN_deliveryAddress &value);
void unpack(XdrReader &in, GEN_distNameString &value);
void unpack(XdrReader &in, GEN_documentFormat &value);
void unpack(XdrReader &in, GEN_eACL &value);
void unpack(XdrReader &in, GEN_eventHandlingProfile &value);
void unpack(XdrReader &in, GEN_finishing &value);
void unpack(XdrReader &in, GEN_fontReference &value);
void unpack(XdrReader &in, GEN_generalizedTime &value);
void unpack(XdrReader &in, GEN_ignoredAttribute &value);
void unpack(XdrReader &in, GEN_mediaConsumed &value);
void unpack(XdrReader &in, GEN_mediaSelect &value);
void unpack(XdrReader &in, GEN_nameOrOid &value);
void unpack(XdrReader &in, GEN_objectIdent &value);
void unpack(XdrReader &in, GEN_pageSelect &value);
void unpack(XdrReader &in, GEN_resultsProfile &value);
void unpack(XdrReader &in, GEN_simpleName &value);
void unpack(XdrReader &in, GEN_string &value);
void unpack(XdrReader &in, GEN_text &value);

// An optional or defaulted field, or an element held by pointer.
template <class Record>
void unpack(XdrReader &in, Record *&optional) {
    if (!in.present())
        return;
    optional = in.make<Record>();
    if (optional != nullptr)
        unpack(in, *optional);
}

// A chain whose elements lie in the member named; null when it is empty.  The nodes are linked as they come,
// so that a long chain needs no deep stack.
template <class Node, class Element>
Node *unpackChain(XdrReader &in, Element Node::*element) {
    Node *head = nullptr;
    for (Node **link = &head; in.present(); link = &(*link)->next) {
        *link = in.make<Node>();
        if (*link == nullptr)
            break;
        unpack(in, (*link)->*element);
    }
    return head;
}

} // namespace qvledger
