// Registration, the handle check of every operation, and the service environment.
#include <functional>

#include <gmock/gmock.h>

#include "ala/base/handle.h"
#include "ala/base/lock.h"
#include "ala/driver/session.h"
#include "tests/support/facility.h"

using namespace qvledger;

using samples::commonKey;
using samples::serverKey;
using testing::ElementsAre;
using testing::StartsWith;

class Register : public Facility {};

TEST_F(Register, EachFailureHasItsCodeAndLogLine) {
    using Keys = std::vector<samples::RegistryKey>;
    const std::string oids = root.oids(), none = folder / "none";
    const auto expect = [&](const char *server, const char *logs, const char *oidPath, const Keys &registry,
                            ALA_retCode_t code, const char *line) {
        SCOPED_TRACE(line);
        root.writeRegistry(registry);
        unsetenv("QV_ROOT");
        takeLog();
        ALA_handle_t made = handle;
        EXPECT_EQ(ALA_Register(server, logs, oidPath, &made), code);
        EXPECT_EQ(made != nullptr, code == ALA_N_NORMAL);
        const std::vector<std::string> lines = takeLog();
        EXPECT_THAT(lines.empty() ? "" : lines.back(), StartsWith(line));
        if (made != nullptr)
            ALA_Unregister(&made);
    };
    const auto byDefault = [&](const Keys &registry, ALA_retCode_t code, const char *line) {
        expect("alpha", "/", nullptr, registry, code, line);
    };
    const auto keyWith = [](const std::string &key, const std::string &value) {
        return samples::RegistryKey{key, {{"QV_ROOT", value}}};
    };
    const std::string ours = serverKey("alpha"), common = commonKey(), path = root.path();
    expect(nullptr, nullptr, oids.c_str(), {}, ALA_A_INVALID_SERVER_NAME,
           "inp_svrName is NULL for ALA_Register; ");
    expect("a", nullptr, oids.c_str(), {}, ALA_A_INVALID_LOG_PATH_NAME,
           "inp_acctLogPath is NULL for ALA_Register;A");
    byDefault({}, ALA_A_SYSTEM_ERR,
              "ALA__SetEnvironmentVariables failed for server qv spl alpha in ALA_Register; ");
    byDefault({{ours, {}}, keyWith(common, path)}, ALA_A_SYSTEM_ERR,
              "getenv on QV_ROOT failed in ALA_Register; ");
    byDefault({keyWith(common, none)}, ALA_A_OID_ERROR, "OID_");
    byDefault({keyWith(ours, path), keyWith(common, none)}, ALA_N_NORMAL, "");
    byDefault({keyWith(common, path)}, ALA_N_NORMAL, "");
}

TEST_F(Register, SecondRegistrationOutlivesTheFirst) {
    ALA_handle_t second = nullptr;
    ASSERT_EQ(ALA_Register("beta", "/", root.oids().c_str(), &second), ALA_N_NORMAL);
    std::swap(handle, second);
    EXPECT_EQ(ALA_Unregister(&second), ALA_N_NORMAL);
    EXPECT_TRUE(THR_LockMutex(&timeLock) == 0 && THR_UnlockMutex(&timeLock) == 0);
    EXPECT_EQ(ALA_Unregister(&handle), ALA_N_NORMAL);
    EXPECT_NE(THR_LockMutex(&timeLock), 0) << "the last one destroys the locks";
    EXPECT_EQ(ALA_Unregister(&handle), ALA_A_NOT_REGISTER);
    EXPECT_EQ(ALA_Unregister(nullptr), ALA_A_NOT_REGISTER);
}

// Passes a non-null out-parameter.  Returns the call's code, or -1 if the parameter is not null afterwards.
template <class Out, class Call>
static ALA_retCode_t clearing(Call call) {
    auto *out = reinterpret_cast<Out *>(alignof(std::max_align_t));
    const ALA_retCode_t code = call(&out);
    return out == nullptr ? code : -1;
}

TEST_F(Register, EveryOperationFirstRefusesAHandleOfAnotherProcess) {
    EXPECT_EXIT(_exit(ALA_Delete(handle, nullptr)), testing::ExitedWithCode(ALA_A_NOT_REGISTER), "")
        << "in a child";
    handleData foreign = {};
    foreign.pid = handle->pid + 1;
    foreign.svrName = _strdup("alpha");
    foreign.acctLogPath = _strdup("/");
    ALA_handle_t used = nullptr;
    ALA_handle_t variable = nullptr;
#define CALL(operation, Out, ...)                                                                            \
    {                                                                                                        \
#operation, [&] { return clearing<Out>([&](auto out) { return operation(used, __VA_ARGS__); }); }    \
    }
    const std::pair<std::string, std::function<ALA_retCode_t()>> cases[] = {
        {"ALA_Unregister", [&] { return ALA_Unregister(&(variable = used)); }},
        {"ALA_Delete", [&] { return ALA_Delete(used, nullptr); }},
        {"ALA_Close", [&] { return ALA_Close(used, nullptr); }},
        CALL(ALA_ListExistingLogsByDate, dateNode, out, std::make_unique<ALA_name *>().get()),
        CALL(ALA_Open, logParams, nullptr, out),
        CALL(ALA_GetFirstJobRecord, record, nullptr, out),
        CALL(ALA_GetNextJobRecord, record, nullptr, out),
        CALL(ALA_GetFirstAttrFromJob, ALA_attrPair, nullptr, nullptr, out),
        CALL(ALA_GetNextAttrFromJob, ALA_attrPair, nullptr, nullptr, out),
        CALL(ALA_GetFirstAttrFromDoc, ALA_attrPair, nullptr, nullptr, out),
        CALL(ALA_GetNextAttrFromDoc, ALA_attrPair, nullptr, nullptr, out),
        CALL(ALA_GetFirstDocmt, docRecord, nullptr, out),
        CALL(ALA_GetNextDocmt, docRecord, nullptr, out),
        CALL(ALA_ListAttributesFromRecord, ALA_attrName, nullptr, 9, nullptr, out),
    };
    for (const auto &[name, call] : cases) {
        const std::string line = name == "ALA_Open" || name == "ALA_Close"
                                     ? " or handle->acctLogPath is NULL or handle->pid != getpid in "
                                     : ", handle->acctLogPath is NULL or handle->pid!=getpid in ";
        for (handleData *bad : {static_cast<handleData *>(nullptr), &foreign}) {
            used = bad;
            takeLog();
            EXPECT_EQ(call(), ALA_A_NOT_REGISTER) << name;
            EXPECT_THAT(takeLog(),
                        ElementsAre("handle, handle->svrName" + line + name + "; ALA_A_NOT_REGISTER"));
        }
    }
    EXPECT_EQ(variable, &foreign) << "the variable of a refused handle is not cleared";
}

TEST_F(Register, ValuesBeforeAnOversizedOneAreSet) {
    const std::string longest(259, 'y');
    setenv("QV_ONE", "old", 1);
    unsetenv("QV_THREE");
    root.writeRegistry(
        {{serverKey("alpha"),
          {{"QV_ONE", "a=b"}, {"QV_TWO", longest}, {"QV_FOUR", longest + "y"}, {"QV_THREE", "late"}}}});
    EXPECT_EQ(ALA__SetEnvironmentVariables("qv spl alpha"), -1);
    EXPECT_STREQ(getenv("QV_ONE"), "a=b");
    EXPECT_EQ(getenv("QV_TWO"), longest);
    EXPECT_EQ(getenv("QV_THREE"), nullptr);
}

TEST(Library, EachCodeHasItsText) {
    const std::pair<ALA_retCode_t, const char *> cases[] = {
        {ALA_N_NORMAL, "ALA_N_NORMAL"},
        {ALA_A_FAIL_TO_UNLINK, "ALA_A_FAIL_TO_UNLINK: unable to delete file."},
        {5, "user supplied output argument is not NULL."},
        {ALA_A_NO_MORE_JOB + 1, "unknown return code"},
        {-1, "unknown return code"}};
    for (const auto &[code, text] : cases)
        EXPECT_STREQ(ALA_CodeText(code), text);
}
