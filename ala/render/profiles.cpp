// Renders profiles: records of several items.  Each kind of item has its own text for an absent item.
#include "ala/render/profiles.h"

#include "ala/render/formatters.h"
#include "ala/render/name_lookup.h"

using namespace qvledger;

// Does the address have a form that is rendered?
static bool hasText(const GEN_deliveryAddress *address) {
    return address != nullptr &&
           (address->choice == GEN_ADDRESS_OCTET_STRING ||
            (address->choice == GEN_MHS_ADDRESS && address->u.mhsAddress.attributes != nullptr));
}

// Appends the address and the suffix.  False, and appends nothing, if the address has no text or the text
// cannot be made.
static bool addAddress(Rendering &rendering, const GEN_deliveryAddress *record, const char *suffix) {
    const Malloced<char> address(ALA__DAToAscii(rendering.status, record));
    if (address == nullptr) {
        if (hasText(record))
            rendering.text.fail();
        return false;
    }
    rendering.text.add(address.get());
    rendering.text.add(suffix);
    return true;
}

const RenderFailure *qvledger::renderDeliveryAddress(Rendering &rendering, const GEN_deliveryAddress &value) {
    addAddress(rendering, &value, ""); // adds nothing if the address has no text
    return nullptr;
}

// Ends an item with a space.  For an absent item, first appends "NULL".
static void endItem(bool there, Text &text) {
    text.add(there ? " " : "NULL ");
}

static void addOidItem(Rendering &rendering, GEN_oid_t oid) {
    endItem(addStrippedName(rendering.status, *rendering.context.oidHandle, rendering.text, oid),
            rendering.text);
}

template <class Octets>
static void addOctetsItem(const Octets &octets, Text &text) {
    if (octets.length != 0)
        text.addUpToNul(octets._value, static_cast<std::size_t>(octets.length));
    endItem(octets.length != 0, text);
}

static void addLocale(Rendering &rendering, const GEN_locale *locale) {
    if (locale == nullptr)
        return endItem(false, rendering.text);
    addOctetsItem(locale->language, rendering.text);
    addOctetsItem(locale->country, rendering.text);
    addOidItem(rendering, locale->character_set);
    addOctetsItem(locale->modifier_o, rendering.text);
}

const RenderFailure *qvledger::renderEventHandlingProfile(Rendering &rendering,
                                                          const GEN_eventHandlingProfile &profile) {
    Text &text = rendering.text;
    if (profile.ehpEventIdentifiers_o == nullptr)
        endItem(false, text);
    for (const auto *event = profile.ehpEventIdentifiers_o; event != nullptr; event = event->next)
        addOidItem(rendering, event->_value);

    if (profile.ehpDeliveryMethod_o != nullptr)
        addOidItem(rendering, *profile.ehpDeliveryMethod_o);
    else
        endItem(false, text);
    endItem(profile.ehpEventComment_o != nullptr &&
                addText(rendering.status, text, profile.ehpEventComment_o),
            text);
    if (profile.ehpDeliveryAddr_o == nullptr)
        endItem(false, text);
    else
        addAddress(rendering, profile.ehpDeliveryAddr_o, " "); // an address without text adds no item
    addLocale(rendering, profile.ehpLocale_o);
    return nullptr;
}

const RenderFailure *qvledger::renderIgnoredAttribute(Rendering &rendering,
                                                      const GEN_ignoredAttribute &ignored) {
    Text &text = rendering.text;
    if (ignored.docNumber_o != nullptr)
        text.addNumber(static_cast<std::int32_t>(*ignored.docNumber_o));
    endItem(ignored.docNumber_o != nullptr, text);
    AS_attrID_t attrID = 0;
    char name[OID_NAME_SIZE];
    if (AS_GetAttrIDR(rendering.status, &ignored.attribute, &attrID) == 0 &&
        OID_LookupShort(rendering.status, *rendering.context.oidHandle, attrID, name, nullptr) == 0)
        text.add(name);
    return nullptr;
}

const RenderFailure *qvledger::renderResultsProfile(Rendering &rendering, const GEN_resultsProfile &profile) {
    STF_l__hdr *status = rendering.status;
    Text &text = rendering.text;
    if (profile.deliveryMethod_o == nullptr)
        text.add("NULL");
    else
        addStrippedName(status, *rendering.context.oidHandle, text,
                        *profile.deliveryMethod_o); // adds nothing if the name is unknown

    text.add(' ');
    if (profile.resultsSetComment_o == nullptr || !addText(status, text, profile.resultsSetComment_o))
        text.add("NULL");
    text.add(' ');
    if (!addAddress(rendering, profile.deliveryAddress_o, " "))
        text.add(" NULL ");
    text.addNumber(profile.jobCopies_d != nullptr ? static_cast<std::int32_t>(*profile.jobCopies_d) : 1);
    text.add(' ');
    if (profile.outputBin_o != nullptr)
        ALA__NameOrOidToAscii(status, *rendering.context.oidHandle, text, profile.outputBin_o);
    else
        text.add("NULL");
    return nullptr;
}
