#pragma once

// Concatenates two texts into a new one, which the caller releases with free.  Null when memory runs out.
char *_ALA_AddChar(const char *inp_string, const char *inp_str);
