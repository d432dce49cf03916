// Expansion of "$(0x........)" references in a configuration text, up to five passes.
//
// Each pass copies its input to its output, replacing every reference that resolves to a
// text or a number. The rules below are kept as they are because texts in the field rely on
// them: an unresolvable reference stays literal but is followed by the lookup's scratch bytes
// (1023 zero bytes for an unknown id), which usually ends the text there or overflows the
// pass; an overflow is only reported by a pass that substituted nothing or by the fifth pass.
#pragma once

#include <cstddef>
#include <cstdint>

#include "config/NyCfg.h"

class CNyCfgExpander {
public:
    explicit CNyCfgExpander(BlkCfgHandleTag* hCfg);
    ~CNyCfgExpander();
    CNyCfgExpander(const CNyCfgExpander&) = delete;
    CNyCfgExpander& operator=(const CNyCfgExpander&) = delete;

    // Expands szRaw. On success Text() is the result, valid until the expander goes.
    // NY_ERR_OUT_OF_MEMORY, or NY_ERR_BUFFER_TOO_SMALL when the result does not fit the work
    // buffers (or a referenced value exceeds the 1024-byte scratch buffer).
    uint32_t Expand(const char* szRaw);
    const char* Text() const { return m_szResult; }

private:
    uint32_t RunPass(const char* szIn);
    // Handles the reference at pRef (closed at pClose) and moves *ppCursor past what it used.
    uint32_t ExpandReference(const char** ppCursor, const char* pRef, const char* pClose);
    // Appends the literal part and the replacement when both fit with a NUL.
    uint32_t Emit(const char* pLiteral, size_t cbLiteral, const char* pReplacement,
                  size_t cbReplacement);

    BlkCfgHandleTag* m_hCfg;
    char* m_szIn = nullptr;
    char* m_szOut = nullptr;
    size_t m_cbCapacity = 0;
    size_t m_cbOut = 0;
    bool m_bSubstituted = false;
    bool m_bAborted = false;
    const char* m_szResult = "";
};
