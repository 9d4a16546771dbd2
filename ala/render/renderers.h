// The render functions that the table of value types is made of, by family.
#pragma once

#include "ala/render/render.h"

constexpr RenderFailure kExtractTextFailed = {ALA_A_OUT_OF_MEMORY,
                                              "GENU_ExtractText failed for oid: %s in ALA__GetAttribute"};

// scalars.cpp
RenderFunction renderBoolean;
RenderFunction renderInt;
RenderFunction renderShort;
RenderFunction renderReal;
RenderFunction renderCardinal64;
RenderFunction renderPageOrder;
RenderFunction renderTime;

// text_types.cpp
RenderFunction renderCharacters;
RenderFunction renderOctets;
RenderFunction renderText;
RenderFunction renderSimpleName;
RenderFunction renderDistName;
RenderFunction renderDistNameSeq;

// identifiers.cpp
RenderFunction renderOid;
RenderFunction renderNameOrOidSeq;
RenderFunction renderPageSelectSeq;
RenderFunction renderMediaConsumedSeq;
RenderFunction renderSetOfObjId;

// profiles.cpp
RenderFunction renderEventHandlingProfile;
RenderFunction renderIgnoredAttribute;
RenderFunction renderResultsProfile;
RenderFunction renderDeliveryAddress;
