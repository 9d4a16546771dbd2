// The placeholders of a message: "%1$s", "%2$d".
#pragma once

// Has the text exactly the placeholders of the default one, in any order and number?  Only then may it be
// given the default one's arguments: any other conversion would read what is not there.
bool samePlaceholders(const char *inp_text, const char *inp_defaultText);
