// STF_: status lists, which operations of the service library take as their first argument for their notes.
//
// Nothing in the system reads a note, so the library keeps none: every list is the same empty one, and
// making and deleting a list costs nothing.
#pragma once

#include <cstdint>

struct STF_l__hdr;

extern "C" {

// Never null.
STF_l__hdr *STF_CreateList(std::int32_t in_reserved);
void STF_DeleteList(STF_l__hdr *inp_list);

} // extern "C"

namespace qvledger {

// A status list for the length of a block.  As all are the same one, it is made where it is used, and has
// nothing to release.
class StatusList {
public:
    operator STF_l__hdr *() const { return STF_CreateList(0); }
};

} // namespace qvledger
