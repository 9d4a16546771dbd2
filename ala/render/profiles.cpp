// Profiles: records of several items, each with words of its own for what is absent.
#include "ala/render/renderers.h"

#include "ala/render/formatters.h"
#include "ala/render/name_lookup.h"

// Is it of a form that becomes a text, unless memory runs out?
static bool hasText(const GEN_deliveryAddress *inp_address) {
    return inp_address != nullptr &&
           (inp_address->choice == GEN_ADDRESS_OCTET_STRING ||
            (inp_address->choice == GEN_MHS_ADDRESS && inp_address->u.mhsAddress.attributes != nullptr));
}

// Appends the address and in_behind; false when it has no text.
static bool addAddress(Rendering &inoutp_rendering, const GEN_deliveryAddress *inp_address,
                       const char *in_behind) {
    const Malloced<char> address(ALA__DAToAscii(inoutp_rendering.status, inp_address));
    if (address == nullptr) {
        if (hasText(inp_address))
            inoutp_rendering.text.fail();
        return false;
    }
    inoutp_rendering.text.add(address.get());
    inoutp_rendering.text.add(in_behind);
    return true;
}

const RenderFailure *renderDeliveryAddress(Rendering &inoutp_rendering, const void *inp_value) {
    addAddress(inoutp_rendering, static_cast<const GEN_deliveryAddress *>(inp_value), ""); // or nothing
    return nullptr;
}

// An item of an event handling profile: what there is, or "NULL", and a blank.
static void endItem(bool in_there, Text &inoutp_text) {
    inoutp_text.add(in_there ? " " : "NULL ");
}

static void addOidItem(Rendering &inoutp_rendering, GEN_oid_t in_oid) {
    endItem(ALA__AddStrippedName(inoutp_rendering.status, *inoutp_rendering.oidHandle, inoutp_rendering.text,
                                 in_oid),
            inoutp_rendering.text);
}

template <class Octets>
static void addOctetsItem(const Octets &in_octets, Text &inoutp_text) {
    if (in_octets.length != 0)
        inoutp_text.addUpToNul(in_octets._value, static_cast<std::size_t>(in_octets.length));
    endItem(in_octets.length != 0, inoutp_text);
}

static void addLocale(Rendering &inoutp_rendering, const GEN_locale *inp_locale) {
    if (inp_locale == nullptr)
        return endItem(false, inoutp_rendering.text);
    addOctetsItem(inp_locale->language, inoutp_rendering.text);
    addOctetsItem(inp_locale->country, inoutp_rendering.text);
    addOidItem(inoutp_rendering, inp_locale->character_set);
    addOctetsItem(inp_locale->modifier_o, inoutp_rendering.text);
}

const RenderFailure *renderEventHandlingProfile(Rendering &inoutp_rendering, const void *inp_value) {
    const auto &profile = *static_cast<const GEN_eventHandlingProfile *>(inp_value);
    Text &text = inoutp_rendering.text;
    if (profile.ehpEventIdentifiers_o == nullptr)
        endItem(false, text);
    for (const auto *event = profile.ehpEventIdentifiers_o; event != nullptr; event = event->next)
        addOidItem(inoutp_rendering, event->_value);

    if (profile.ehpDeliveryMethod_o != nullptr)
        addOidItem(inoutp_rendering, *profile.ehpDeliveryMethod_o);
    else
        endItem(false, text);
    endItem(profile.ehpEventComment_o != nullptr &&
                ALA__AddText(inoutp_rendering.status, text, profile.ehpEventComment_o),
            text);
    if (profile.ehpDeliveryAddr_o == nullptr)
        endItem(false, text);
    else
        addAddress(inoutp_rendering, profile.ehpDeliveryAddr_o, " "); // one without a text is no item at all
    addLocale(inoutp_rendering, profile.ehpLocale_o);
    return nullptr;
}

const RenderFailure *renderIgnoredAttribute(Rendering &inoutp_rendering, const void *inp_value) {
    const auto &ignored = *static_cast<const GEN_ignoredAttribute *>(inp_value);
    Text &text = inoutp_rendering.text;
    if (ignored.docNumber_o != nullptr)
        text.addNumber(static_cast<std::int32_t>(*ignored.docNumber_o));
    endItem(ignored.docNumber_o != nullptr, text);
    AS_attrID_t attrID = 0;
    char name[OID_NAME_SIZE];
    if (AS_GetAttrIDR(inoutp_rendering.status, &ignored.attribute, &attrID) == 0 &&
        OID_LookupShort(inoutp_rendering.status, *inoutp_rendering.oidHandle, attrID, name, nullptr) == 0)
        text.add(name);
    return nullptr;
}

const RenderFailure *renderResultsProfile(Rendering &inoutp_rendering, const void *inp_value) {
    const auto &profile = *static_cast<const GEN_resultsProfile *>(inp_value);
    STF_l__hdr *status = inoutp_rendering.status;
    Text &text = inoutp_rendering.text;
    if (profile.deliveryMethod_o == nullptr)
        text.add("NULL");
    else
        ALA__AddStrippedName(status, *inoutp_rendering.oidHandle, text,
                             *profile.deliveryMethod_o); // or nothing

    text.add(' ');
    if (profile.resultsSetComment_o == nullptr || !ALA__AddText(status, text, profile.resultsSetComment_o))
        text.add("NULL");
    text.add(' ');
    if (!addAddress(inoutp_rendering, profile.deliveryAddress_o, " "))
        text.add(" NULL ");
    text.addNumber(profile.jobCopies_d != nullptr ? static_cast<std::int32_t>(*profile.jobCopies_d) : 1);
    text.add(' ');
    if (profile.outputBin_o != nullptr)
        ALA__NameOrOidToAscii(status, *inoutp_rendering.oidHandle, text, profile.outputBin_o);
    else
        text.add("NULL");
    return nullptr;
}
