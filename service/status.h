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

// Owns a status list for the length of a block.
class StatusList {
public:
    StatusList() : list(STF_CreateList(0)) {}
    ~StatusList() { STF_DeleteList(list); }
    StatusList(const StatusList &) = delete;
    StatusList &operator=(const StatusList &) = delete;
    operator STF_l__hdr *() const { return list; }

private:
    STF_l__hdr *list;
};

} // namespace qvledger
