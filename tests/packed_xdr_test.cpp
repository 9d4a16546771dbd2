// Checks the sample values of other tests with an independent implementation: routines that rpcgen makes from
// service/packed/values.x.  They must unpack each value and pack the same bytes.
#include <initializer_list>
#include <string>

#include <gtest/gtest.h>
#include <rpc/rpc.h>

#include "tests/support/value_cases.h"

namespace xdr {
#include "xdr/values.h"
} // namespace xdr

template <class Generated>
static void judge(std::initializer_list<std::uint32_t> types, bool_t (*routine)(XDR *, Generated *)) {
    for (const std::uint32_t type : types) {
        int samples = 0;
        for (const ValueCase &sample : valueCases()) {
            if (sample.type != type)
                continue;
            SCOPED_TRACE("value type " + std::to_string(type) + ", " + sample.label);
            samples++;
            std::string bytes = sample.packed;
            Generated value = {};
            XDR xdrs;
            xdrmem_create(&xdrs, bytes.data(), static_cast<u_int>(bytes.size()), XDR_DECODE);
            ASSERT_TRUE(routine(&xdrs, &value));
            EXPECT_EQ(xdr_getpos(&xdrs), bytes.size());
            bytes.assign(bytes.size(), '?');
            xdrmem_create(&xdrs, bytes.data(), static_cast<u_int>(bytes.size()), XDR_ENCODE);
            EXPECT_TRUE(routine(&xdrs, &value));
            EXPECT_EQ(bytes, sample.packed);
            xdr_free(reinterpret_cast<xdrproc_t>(routine), &value);
        }
        EXPECT_GT(samples, 0) << "no sample of value type " << type;
    }
}

// The types that are missing here are packed as one number, like types 1, 12 and 22.
TEST(PackedValues, SamplesEqualWhatTheCLibraryPacks) {
    judge({1, 12, 22}, xdr::xdr_GEN_integer_t);
    judge({6}, xdr::xdr_GEN_distNameString);
    judge({7}, xdr::xdr_GEN_eACL);
    judge({8}, xdr::xdr_GEN_eventHandlingProfile);
    judge({9}, xdr::xdr_GEN_fontReference);
    judge({11}, xdr::xdr_GEN_ignoredAttribute);
    judge({14}, xdr::xdr_GEN_characters);
    judge({16, 28}, xdr::xdr_GEN_text);
    judge({18}, xdr::xdr_GEN_nameOrOid);
    judge({20}, xdr::xdr_GEN_string);
    judge({23, 62}, xdr::xdr_GEN_real_t);
    judge({27}, xdr::xdr_GEN_simpleName);
    judge({31}, xdr::xdr_GEN_cardinal64);
    judge({34}, xdr::xdr_GEN_cardinalOrNoid);
    judge({39}, xdr::xdr_GEN_deliveryAddress);
    judge({42}, xdr::xdr_GEN_distNameStrings);
    judge({43}, xdr::xdr_GEN_documentFormat);
    judge({46}, xdr::xdr_GEN_finishing);
    judge({48}, xdr::xdr_GEN_generalizedTime);
    judge({60}, xdr::xdr_GEN_nameOrOids);
    judge({67}, xdr::xdr_GEN_mediaSelect);
    judge({69}, xdr::xdr_GEN_pageSelects);
    judge({81}, xdr::xdr_GEN_resultsProfile);
    judge({91}, xdr::xdr_GEN_mediaConsumedList);
    judge({93}, xdr::xdr_GEN_objectIdents);
}
