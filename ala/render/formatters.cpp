#include "ala/render/formatters.h"

#include <cstring>

#include "ala/render/name_lookup.h"
#include "service/text/mail_address.h"

using namespace qvledger;

char *ALA__DAToAscii(STF_l__hdr *inoutp_status, const GEN_deliveryAddress *in_da) {
    if (in_da == nullptr)
        return nullptr;
    if (in_da->choice == GEN_MHS_ADDRESS) {
        char *address = nullptr; // stays null if there is no address
        static_cast<void>(GEN_X400ToInternetMailAddress(inoutp_status, &address, &in_da->u.mhsAddress, 0));
        return address;
    }
    if (in_da->choice != GEN_ADDRESS_OCTET_STRING)
        return nullptr;
    const auto length = static_cast<std::size_t>(in_da->u.octetString.length);
    auto *text = static_cast<char *>(std::calloc(length + 1, 1));
    if (text != nullptr)
        std::memcpy(text, in_da->u.octetString._value, length);
    return text;
}

static void addTwoDigits(std::uint32_t number, Text &buf) {
    buf.add(static_cast<char>('0' + number / 10));
    buf.add(static_cast<char>('0' + number % 10));
}

void ALA__DeltaTimeToAscii(STF_l__hdr *, void *, Text &inout_buf, const GEN_deltaTime_t *inp_dt) {
    if (inp_dt == nullptr)
        return;
    inout_buf.addNumber(*inp_dt / 3600);
    inout_buf.add(':');
    addTwoDigits(*inp_dt % 3600 / 60, inout_buf);
    inout_buf.add(':');
    addTwoDigits(*inp_dt % 60, inout_buf);
}

void ALA__DocFormatToAscii(STF_l__hdr *inoutp_status, void *in_handle, Text &buf,
                           const GEN_documentFormat *dfp) {
    if (!addStrippedName(inoutp_status, in_handle, buf, dfp->format))
        buf.add(' ');
}

void ALA__EdgeToAscii(STF_l__hdr *, void *, Text &in_buff, const GEN_edge_t *inp_gen) {
    static constexpr const char *kEdges[] = {"bottom-edge", "right-edge", "top-edge", "left-edge"};
    const bool valid = *inp_gen >= 0 && *inp_gen < static_cast<std::int32_t>(std::size(kEdges));
    in_buff.add(valid ? kEdges[*inp_gen] : "Invalid-Edge-Choice");
}

void ALA__FinishingToAscii(STF_l__hdr *inoutp_status, void *in_handle, Text &buf, const GEN_finishing *ip) {
    if (ip == nullptr)
        return buf.add("<null>");
    if (ip->finishingMessage_o != nullptr && addText(inoutp_status, buf, ip->finishingMessage_o))
        buf.add(' ');
    if (ip->choice == GEN_FINISHING_NAMED)
        ALA__NameOrOidToAscii(inoutp_status, in_handle, buf, &ip->u.named);
}

void ALA__FontReferenceToAscii(STF_l__hdr *inoutp_status, void *, Text &buf, const GEN_fontReference *ip) {
    if (ip == nullptr)
        return buf.add("<null>");
    if (ip->choice != GEN_SIMPLE_FONT_NAME)
        return buf.add("font reference not a simple name");
    addSimpleName(inoutp_status, buf, &ip->u.simpleFontName);
}

void ALA__mediaConsumedToAscii(STF_l__hdr *inoutp_status, void *in_handle, Text &buf,
                               const GEN_mediaConsumed *ip) {
    if (ip == nullptr)
        return buf.add("<null>");
    ALA__NameOrOidToAscii(inoutp_status, in_handle, buf, &ip->printType);
    buf.add(':');
    ALA__ObjectIdentToAscii(inoutp_status, in_handle, buf, &ip->mediumSize);
    buf.add(':');
    buf.addNumber(static_cast<std::int32_t>(ip->printedImpressions));
    buf.add(':');
    buf.addNumber(static_cast<std::int32_t>(ip->consumedMediaSheets));
}

void ALA__MedSelectToAscii(STF_l__hdr *inoutp_status, void *in_handle, Text &in_buff,
                           const GEN_mediaSelect *inp_ms) {
    if (inp_ms->choice == GEN_MEDIUM_FOR_ALL_PAGES)
        return ALA__NameOrOidToAscii(inoutp_status, in_handle, in_buff, &inp_ms->u.mediumForAllPages);
    if (inp_ms->choice != GEN_MEDIUM_FOR_SEL_PAGES)
        return;
    for (const auto *node = inp_ms->u.mediumForSelPages; node != nullptr; node = node->next) {
        const GEN_pageMediaSelect &selection = node->_value;
        ALA__NameOrOidToAscii(inoutp_status, in_handle, in_buff, &selection.mediumId);
        in_buff.add(' ');
        ALA__PageIdentToAscii(inoutp_status, in_handle, in_buff, selection.pageRange.beginningPage_o);
        in_buff.add(' ');
        ALA__PageIdentToAscii(inoutp_status, in_handle, in_buff, selection.pageRange.endingPage_o);
        if (node->next != nullptr)
            in_buff.add(' ');
    }
}

void ALA__PageIdentToAscii(STF_l__hdr *inoutp_status, void *in_handle, Text &buf,
                           const GEN_pageIdentifier *ip) {
    if (ip == nullptr)
        return buf.add("<not specified>");
    switch (ip->choice) {
    case GEN_NOMINAL_PAGE_NUM:
        return buf.addNumber(static_cast<std::int32_t>(ip->u.nominalPageNum));
    case GEN_ALPHANUMERIC_PAGE_NUM:
        return addSimpleName(inoutp_status, buf, &ip->u.alphanumericPageNum);
    case GEN_PAGE_TAG:
        return ALA__NameOrOidToAscii(inoutp_status, in_handle, buf, &ip->u.pageTag);
    default:
        buf.add("Bad ID:");
        return buf.addNumber(ip->choice);
    }
}

void ALA__pageSelectToAscii(STF_l__hdr *inoutp_status, void *in_handle, Text &buf, const GEN_pageSelect *ip) {
    if (ip == nullptr)
        return buf.add("<null>");
    ALA__PageIdentToAscii(inoutp_status, in_handle, buf, ip->beginningPage_o);
    buf.add(':');
    ALA__PageIdentToAscii(inoutp_status, in_handle, buf, ip->endingPage_o);
}
