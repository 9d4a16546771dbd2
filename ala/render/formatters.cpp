#include "ala/render/formatters.h"

#include <cstring>

#include "ala/render/names.h"
#include "service/text.h"

char *ALA__DAToAscii(STF_l__hdr *inoutp_status, const GEN_deliveryAddress *in_da) {
    if (in_da == nullptr)
        return nullptr;
    if (in_da->choice == GEN_MHS_ADDRESS) {
        char *address = nullptr; // stays so when there is none
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

static void addTwoDigits(std::uint32_t in_number, Text &buf) {
    buf.add(static_cast<char>('0' + in_number / 10));
    buf.add(static_cast<char>('0' + in_number % 10));
}

void ALA__DeltaTimeToAscii(const GEN_deltaTime_t *inp_dt, Text &inout_buf) {
    if (inp_dt == nullptr)
        return;
    inout_buf.addNumber(*inp_dt / 3600);
    inout_buf.add(':');
    addTwoDigits(*inp_dt % 3600 / 60, inout_buf);
    inout_buf.add(':');
    addTwoDigits(*inp_dt % 60, inout_buf);
}

void ALA__DocFormatToAscii(STF_l__hdr *status, void **inoutp_oidHandle, const GEN_documentFormat *dfp,
                           Text &buf) {
    if (!ALA__AddStrippedName(status, *inoutp_oidHandle, dfp->format, buf))
        buf.add(' ');
}

void ALA__EdgeToAscii(const GEN_edge_t *inp_gen, Text &in_buff) {
    static constexpr const char *kEdges[] = {"bottom-edge", "right-edge", "top-edge", "left-edge"};
    const bool valid = *inp_gen >= 0 && *inp_gen < static_cast<std::int32_t>(std::size(kEdges));
    in_buff.add(valid ? kEdges[*inp_gen] : "Invalid-Edge-Choice");
}

void ALA__FinishingToAscii(STF_l__hdr *inoutp_status, const GEN_finishing *ip, void *in_handle, Text &buf) {
    if (ip == nullptr)
        return buf.add("<null>");
    if (ip->finishingMessage_o != nullptr && ALA__AddText(inoutp_status, ip->finishingMessage_o, buf))
        buf.add(' ');
    if (ip->choice == GEN_FINISHING_NAMED)
        ALA__NameOrOidToAscii(inoutp_status, &ip->u.named, in_handle, buf);
}

void ALA__FontReferenceToAscii(STF_l__hdr *inoutp_status, const GEN_fontReference *ip, Text &buf) {
    if (ip == nullptr)
        return buf.add("<null>");
    if (ip->choice != GEN_SIMPLE_FONT_NAME)
        return buf.add("font reference not a simple name");
    ALA__AddSimpleName(inoutp_status, &ip->u.simpleFontName, buf);
}

void ALA__mediaConsumedToAscii(STF_l__hdr *inoutp_status, const GEN_mediaConsumed *ip, void *in_handle,
                               Text &buf) {
    if (ip == nullptr)
        return buf.add("<null>");
    ALA__NameOrOidToAscii(inoutp_status, &ip->printType, in_handle, buf);
    buf.add(':');
    ALA__ObjectIdentToAscii(inoutp_status, &ip->mediumSize, in_handle, buf);
    buf.add(':');
    buf.addNumber(static_cast<std::int32_t>(ip->printedImpressions));
    buf.add(':');
    buf.addNumber(static_cast<std::int32_t>(ip->consumedMediaSheets));
}

void ALA__MedSelectToAscii(const GEN_mediaSelect *inp_ms, void *in_handle, Text &in_buff) {
    const StatusList status;
    if (inp_ms->choice == GEN_MEDIUM_FOR_ALL_PAGES)
        return ALA__NameOrOidToAscii(status, &inp_ms->u.mediumForAllPages, in_handle, in_buff);
    if (inp_ms->choice != GEN_MEDIUM_FOR_SEL_PAGES)
        return;
    for (const auto *node = inp_ms->u.mediumForSelPages; node != nullptr; node = node->next) {
        const GEN_pageMediaSelect &selection = node->_value;
        ALA__NameOrOidToAscii(status, &selection.mediumId, in_handle, in_buff);
        in_buff.add(' ');
        ALA__PageIdentToAscii(status, selection.pageRange.beginningPage_o, in_handle, in_buff);
        in_buff.add(' ');
        ALA__PageIdentToAscii(status, selection.pageRange.endingPage_o, in_handle, in_buff);
        if (node->next != nullptr)
            in_buff.add(' ');
    }
}

void ALA__PageIdentToAscii(STF_l__hdr *inoutp_status, const GEN_pageIdentifier *ip, void *in_handle,
                           Text &buf) {
    if (ip == nullptr)
        return buf.add("<not specified>");
    switch (ip->choice) {
    case GEN_NOMINAL_PAGE_NUM:
        return buf.addNumber(static_cast<std::int32_t>(ip->u.nominalPageNum));
    case GEN_ALPHANUMERIC_PAGE_NUM:
        return ALA__AddSimpleName(inoutp_status, &ip->u.alphanumericPageNum, buf);
    case GEN_PAGE_TAG:
        return ALA__NameOrOidToAscii(inoutp_status, &ip->u.pageTag, in_handle, buf);
    default:
        buf.add("Bad ID:");
        return buf.addNumber(ip->choice);
    }
}

void ALA__pageSelectToAscii(STF_l__hdr *inoutp_status, const GEN_pageSelect *ip, void *in_handle, Text &buf) {
    if (ip == nullptr)
        return buf.add("<null>");
    ALA__PageIdentToAscii(inoutp_status, ip->beginningPage_o, in_handle, buf);
    buf.add(':');
    ALA__PageIdentToAscii(inoutp_status, ip->endingPage_o, in_handle, buf);
}
