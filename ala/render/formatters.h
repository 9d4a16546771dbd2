// Formatters for the report: each appends the text of one print-job value.
//
// An absent or invalid part adds a fixed text or nothing.  ALA__DocFormatToAscii, ALA__EdgeToAscii and
// ALA__MedSelectToAscii need a value that is not null; the others accept null.  When memory runs out, the
// Text fails (Text::failed()); the formatters do not report it otherwise.  The arguments are always status,
// database handle, text, value, except for ALA__DAToAscii, which returns its text.
#pragma once

#include "ala/render/value_text.h"
#include "service/packed/values.h"
#include "service/status.h"

// The text of an address as a new string, to be released with free.  Null if the address is null or has no
// text, or when memory runs out.
char *ALA__DAToAscii(STF_l__hdr *inoutp_status, const GEN_deliveryAddress *in_da);

void ALA__DeltaTimeToAscii(STF_l__hdr *, void *, qvledger::Text &inout_buf, const GEN_deltaTime_t *inp_dt);
void ALA__DocFormatToAscii(STF_l__hdr *inoutp_status, void *in_handle, qvledger::Text &buf,
                           const GEN_documentFormat *dfp);
void ALA__EdgeToAscii(STF_l__hdr *, void *, qvledger::Text &in_buff, const GEN_edge_t *inp_gen);
void ALA__FinishingToAscii(STF_l__hdr *inoutp_status, void *in_handle, qvledger::Text &buf,
                           const GEN_finishing *ip);
void ALA__FontReferenceToAscii(STF_l__hdr *inoutp_status, void *, qvledger::Text &buf,
                               const GEN_fontReference *ip);
void ALA__mediaConsumedToAscii(STF_l__hdr *inoutp_status, void *in_handle, qvledger::Text &buf,
                               const GEN_mediaConsumed *ip);
void ALA__MedSelectToAscii(STF_l__hdr *inoutp_status, void *in_handle, qvledger::Text &in_buff,
                           const GEN_mediaSelect *inp_ms);
void ALA__PageIdentToAscii(STF_l__hdr *inoutp_status, void *in_handle, qvledger::Text &buf,
                           const GEN_pageIdentifier *ip);
void ALA__pageSelectToAscii(STF_l__hdr *inoutp_status, void *in_handle, qvledger::Text &buf,
                            const GEN_pageSelect *ip);
