// The vocabulary of the report: one kind of print-job value each, appended to a text.
//
// A bad or absent input has a text of its own, or none; nothing here fails.
#pragma once

#include "ala/render/text.h"
#include "service/status.h"
#include "service/values.h"

// The address as a new string; null for a form that has no text.
char *ALA__DAToAscii(STF_l__hdr *inoutp_status, const GEN_deliveryAddress *in_da);

void ALA__DeltaTimeToAscii(const GEN_deltaTime_t *inp_dt, Text &inout_buf);
void ALA__DocFormatToAscii(STF_l__hdr *status, void **inoutp_oidHandle, const GEN_documentFormat *dfp,
                           Text &buf);
void ALA__EdgeToAscii(const GEN_edge_t *inp_gen, Text &in_buff);
void ALA__FinishingToAscii(STF_l__hdr *inoutp_status, const GEN_finishing *ip, void *in_handle, Text &buf);
void ALA__FontReferenceToAscii(STF_l__hdr *inoutp_status, const GEN_fontReference *ip, Text &buf);
void ALA__mediaConsumedToAscii(STF_l__hdr *inoutp_status, const GEN_mediaConsumed *ip, void *in_handle,
                               Text &buf);
void ALA__MedSelectToAscii(const GEN_mediaSelect *inp_ms, void *in_handle, Text &in_buff);
void ALA__PageIdentToAscii(STF_l__hdr *inoutp_status, const GEN_pageIdentifier *ip, void *in_handle,
                           Text &buf);
void ALA__pageSelectToAscii(STF_l__hdr *inoutp_status, const GEN_pageSelect *ip, void *in_handle, Text &buf);
