// What the facility remembers of a record's attributes until the next record.
//
// Records of a log mostly have the same attributes at the same places.  A column is the attribute that stood
// at a place last: its object identifier and its name, which is not looked up again while it stays the same.
#pragma once

#include "ala/base/handle.h"
#include "ala/log/record.h"

struct ALA__column {
    std::uint8_t decoidSize; // with the NUL; 0 until something is remembered
    std::uint16_t nameSize;  // without it
    char decoid[kDecoidSize];
    char name[OID_NAME_SIZE];
};

// The column at the attribute's place if the attribute is still the same, else null.  It is good until the
// next call for the handle; the node keeps it for as long as nothing else is remembered.
const ALA__column *ALA__RecallColumn(ALA_handle_t in_handle, attrValNode *inoutp_node);

// Remembers an attribute with its name.  Places far behind, and exhausted memory, are
// no failure: nothing is remembered then.
void ALA__RememberColumn(ALA_handle_t in_handle, const attrValNode &in_node, const char *inp_name);

// Names in another language are about to be asked for.
void ALA__ForgetColumns(ALA_handle_t in_handle);
