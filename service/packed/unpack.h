// Readers of packed values: unpack(in, record) reads the fields in the order of service/packed/values.x into
// a zeroed record.  Invalid bytes make the XdrReader fail.
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

// Reads an optional or defaulted field, or a chain element that is a pointer.  An absent value leaves the
// pointer null.
template <class Record>
void unpack(XdrReader &in, Record *&optional) {
    if (!in.present())
        return;
    optional = in.make<Record>();
    if (optional != nullptr)
        unpack(in, *optional);
}

// Reads a chain whose nodes have their element in the given member.  Returns the first node; null if the
// chain is empty.  If the reader fails, the result is null or an incomplete chain.  Uses a loop, because
// recursion over a long chain would exhaust the stack.
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
