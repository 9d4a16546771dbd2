// STF_: status lists, the first argument of service library operations.  An operation could leave notes in
// its list.
//
// Nothing reads such notes, so the library keeps no notes: all lists are the same empty object, and creating
// or deleting a list costs nothing.
#pragma once

#include <cstdint>

struct STF_l__hdr;

extern "C" {

// STF_CreateList never returns null.
STF_l__hdr *STF_CreateList(std::int32_t in_reserved);
void STF_DeleteList(STF_l__hdr *inp_list);

} // extern "C"

namespace qvledger {

// A status list for the current scope.  It needs no destructor, because all lists are the same object.
class StatusList {
public:
    operator STF_l__hdr *() const { return STF_CreateList(0); }
};

} // namespace qvledger
