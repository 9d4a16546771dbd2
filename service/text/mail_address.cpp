#include <cstdlib>
#include <new>
#include <string>
#include <string_view>

#include "platform/os.h"
#include "service/text/mail_address.h"

using namespace qvledger;

constexpr char kMailType[] = "DDA:RFC-822";
constexpr std::string_view kWrittenAt = "(a)"; // means "@", which O/R addresses cannot contain

static const char *textOrEmpty(const char *text) {
    return text != nullptr ? text : "";
}

static const ODP_orPair *findMailAttribute(const ODP_orName *address) {
    for (const ODP_orAttribute *node = address->attributes; node != nullptr; node = node->next) {
        if (_stricmp(textOrEmpty(node->_value.type), kMailType) == 0)
            return &node->_value;
    }
    return nullptr;
}

static std::string mailAddress(std::string_view written) {
    std::string address;
    for (std::size_t at = 0; (at = written.find(kWrittenAt)) != written.npos;) {
        address.append(written.substr(0, at)).append("@");
        written.remove_prefix(at + kWrittenAt.size());
    }
    return address.append(written);
}

static std::string listOfAttributes(const ODP_orName *address) {
    std::string list;
    for (const ODP_orAttribute *node = address->attributes; node != nullptr; node = node->next) {
        list.append("/").append(textOrEmpty(node->_value.type));
        list.append("=").append(textOrEmpty(node->_value.value));
    }
    return list.append("/");
}

std::int32_t GEN_X400ToInternetMailAddress(STF_l__hdr *, char **outpp_text, const ODP_orName *inp_address,
                                           std::int32_t) {
    if (inp_address == nullptr || inp_address->attributes == nullptr)
        return 0;
    try {
        const ODP_orPair *mail = findMailAttribute(inp_address);
        const std::string address =
            mail != nullptr ? mailAddress(textOrEmpty(mail->value)) : listOfAttributes(inp_address);
        char *text = _strdup(address.c_str());
        if (text == nullptr)
            return 1;
        *outpp_text = text;
        return 0;
    } catch (const std::bad_alloc &) {
        return 1;
    }
}
