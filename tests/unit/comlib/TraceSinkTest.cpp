// The shipped library's own sink for trace lines.
#include <dlfcn.h>

#include <cerrno>

#include "ComLibFixture.h"
#include "comlib/TraceSink.h"

namespace {

using SetSink = decltype(&QorSetTraceSink);
using Mkdir = decltype(&_mkdir);

struct CLine {
    std::string module;
    unsigned level = 0;
    std::string message;
};

void Keep(void* context, const char* module, CTraceUtility::TRACE_DBG_LEVEL level,
          const char* message, unsigned long length) {
    EXPECT_EQ(message[length], '\0');
    errno = EDOM;
    static_cast<std::vector<CLine>*>(context)->push_back(
        {module, static_cast<unsigned>(level), {message, length}});
}

class TraceSinkTest : public qortest::CComLibFixture {
protected:
    void SetUp() override {
        CComLibFixture::SetUp();
        m_Library = dlopen(QOR_COMLIB_FILE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(m_Library, nullptr) << dlerror();
        m_SetSink = reinterpret_cast<SetSink>(dlsym(m_Library, "QorSetTraceSink"));
        ASSERT_NE(m_SetSink, nullptr);
    }
    void TearDown() override {
        m_SetSink(nullptr, nullptr, 0);
        dlclose(m_Library);
        TakeTraces();
        CComLibFixture::TearDown();
    }

    // An operation that traces one failure.
    void TraceFailure() const {
        reinterpret_cast<Mkdir>(dlsym(m_Library, "_mkdir"))("/nonexistent/x");
    }

    void* m_Library = nullptr;
    SetSink m_SetSink = nullptr;
    std::vector<CLine> m_Lines;
};

TEST_F(TraceSinkTest, LinesOfItsLevelsComeFormatted) {
    m_SetSink(Keep, &m_Lines, CTraceUtility::TRACE_DBG_FAILURE);
    TraceFailure();
    ASSERT_EQ(m_Lines.size(), 1U);
    EXPECT_EQ(m_Lines[0].module, "ComLib");
    EXPECT_EQ(m_Lines[0].level, 2U);
    EXPECT_EQ(m_Lines[0].message,
              "cannot create directory \"/nonexistent/x\": No such file or directory");
}

TEST_F(TraceSinkTest, OtherLevelsDoNotCome) {
    m_SetSink(Keep, &m_Lines, CTraceUtility::TRACE_DBG_RESULT);
    TraceFailure();
    EXPECT_TRUE(m_Lines.empty());
}

TEST_F(TraceSinkTest, ConfiguredSinkGetsItsLinesAllTheSame) {
    m_SetSink(Keep, &m_Lines, CTraceUtility::TRACE_DBG_FAILURE);
    TraceFailure();
    EXPECT_EQ(TakeTraces().size(), 1U);
}

TEST_F(TraceSinkTest, NullEndsIt) {
    m_SetSink(Keep, &m_Lines, CTraceUtility::TRACE_DBG_FAILURE);
    m_SetSink(nullptr, nullptr, CTraceUtility::TRACE_DBG_FAILURE);
    TraceFailure();
    EXPECT_TRUE(m_Lines.empty());
}

TEST_F(TraceSinkTest, ErrnoOfTheCallerSurvivesTheSink) {
    m_SetSink(Keep, &m_Lines, CTraceUtility::TRACE_DBG_FAILURE);
    TraceFailure();
    EXPECT_EQ(errno, ENOENT);
}

}  // namespace
