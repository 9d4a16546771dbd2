#pragma once

// One text directly followed by the other as a new text, released with free; null when memory runs out.
char *_ALA_AddChar(const char *inp_string, const char *inp_str);
