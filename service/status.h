// STF_: status lists, the first argument of service library operations, which could leave notes in them.
//
// Nothing reads notes, so the library keeps none: all lists are the same empty object, and creating and
// deleting one costs nothing.
#pragma once

#include <cstdint>

struct STF_l__hdr;

extern "C" {

// Never null.
STF_l__hdr *STF_CreateList(std::int32_t in_reserved);
void STF_DeleteList(STF_l__hdr *inp_list);

} // extern "C"

namespace qvledger {

// A status list for a block.  All lists are the same object, so it has nothing to release.
class StatusList {
public:
    operator STF_l__hdr *() const { return STF_CreateList(0); }
};

} // namespace qvledger
