#pragma once

// Returns the concatenation of two texts as a new text, which the calling function releases with free.  Null
// when memory runs out.
char *_ALA_AddChar(const char *inp_string, const char *inp_str);
