#include "ui/GUISecureBuffer.h"

#include <atomic>
#include <cstring>

#include "log/NyLog.h"
#include "runtime/NySafe.h"
#include "runtime/NySecureMem.h"

namespace {

struct NySecureEntryBuffer {
    GtkEntryBuffer parent;
    gchar* szText;  // NY_GUI_SECURE_TEXT_BYTES + 1 bytes of locked memory, NUL-terminated
    gsize cbText;
    guint cchText;
};

struct NySecureEntryBufferClass {
    GtkEntryBufferClass parent_class;
};

G_DEFINE_TYPE(NySecureEntryBuffer, ny_secure_entry_buffer, GTK_TYPE_ENTRY_BUFFER)

NySecureEntryBuffer* Self(GtkEntryBuffer* pBuffer) {
    return reinterpret_cast<NySecureEntryBuffer*>(pBuffer);
}

gsize ByteOffset(const gchar* szText, guint cchOffset) {
    return static_cast<gsize>(g_utf8_offset_to_pointer(szText, cchOffset) - szText);
}

const gchar* GetText(GtkEntryBuffer* pBuffer, gsize* pcbText) {
    NySecureEntryBuffer* pSelf = Self(pBuffer);
    if (pcbText != nullptr) {
        *pcbText = pSelf->cbText;
    }
    return pSelf->szText != nullptr ? pSelf->szText : "";
}

guint GetLength(GtkEntryBuffer* pBuffer) {
    return Self(pBuffer)->cchText;
}

guint InsertText(GtkEntryBuffer* pBuffer, guint uPosition, const gchar* szChars, guint cchChars) {
    NySecureEntryBuffer* pSelf = Self(pBuffer);
    if (pSelf->szText == nullptr) {
        return 0;  // no memory for it: nothing is taken rather than kept unprotected
    }
    gsize cbChars = ByteOffset(szChars, cchChars);
    // Whole characters only, as many as fit.
    while (cchChars > 0 && pSelf->cbText + cbChars > NY_GUI_SECURE_TEXT_BYTES) {
        --cchChars;
        cbChars = ByteOffset(szChars, cchChars);
    }
    if (cchChars == 0) {
        return 0;
    }
    uPosition = MIN(uPosition, pSelf->cchText);
    gsize cbAt = ByteOffset(pSelf->szText, uPosition);
    memmove(pSelf->szText + cbAt + cbChars, pSelf->szText + cbAt, pSelf->cbText - cbAt);
    memcpy(pSelf->szText + cbAt, szChars, cbChars);
    pSelf->cbText += cbChars;
    pSelf->cchText += cchChars;
    pSelf->szText[pSelf->cbText] = '\0';
    gtk_entry_buffer_emit_inserted_text(pBuffer, uPosition, szChars, cchChars);
    return cchChars;
}

guint DeleteText(GtkEntryBuffer* pBuffer, guint uPosition, guint cchChars) {
    NySecureEntryBuffer* pSelf = Self(pBuffer);
    uPosition = MIN(uPosition, pSelf->cchText);
    cchChars = MIN(cchChars, pSelf->cchText - uPosition);
    if (cchChars == 0) {
        return 0;
    }
    gsize cbStart = ByteOffset(pSelf->szText, uPosition);
    gsize cbEnd = ByteOffset(pSelf->szText, uPosition + cchChars);
    memmove(pSelf->szText + cbStart, pSelf->szText + cbEnd, pSelf->cbText - cbEnd);
    gsize cbRemoved = cbEnd - cbStart;
    pSelf->cbText -= cbRemoved;
    pSelf->cchText -= cchChars;
    // What moved down leaves its old copy behind the end: wiped at once.
    NyMemSafeClear(pSelf->szText + pSelf->cbText, cbRemoved);
    gtk_entry_buffer_emit_deleted_text(pBuffer, uPosition, cchChars);
    return cchChars;
}

void Finalize(GObject* pObject) {
    NySecureFree(Self(GTK_ENTRY_BUFFER(pObject))->szText);
    G_OBJECT_CLASS(ny_secure_entry_buffer_parent_class)->finalize(pObject);
}

void ny_secure_entry_buffer_init(NySecureEntryBuffer* pSelf) {
    pSelf->szText = static_cast<gchar*>(NySecureAlloc(NY_GUI_SECURE_TEXT_BYTES + 1));
    pSelf->cbText = 0;
    pSelf->cchText = 0;
    NyGuiNoteSecureMemory(pSelf->szText);
}

void ny_secure_entry_buffer_class_init(NySecureEntryBufferClass* pClass) {
    G_OBJECT_CLASS(pClass)->finalize = Finalize;
    GtkEntryBufferClass* pBufferClass = GTK_ENTRY_BUFFER_CLASS(pClass);
    pBufferClass->get_text = GetText;
    pBufferClass->get_length = GetLength;
    pBufferClass->insert_text = InsertText;
    pBufferClass->delete_text = DeleteText;
}

}  // namespace

GtkEntryBuffer* NyGuiSecureEntryBufferNew() {
    return GTK_ENTRY_BUFFER(g_object_new(ny_secure_entry_buffer_get_type(), nullptr));
}

void NyGuiNoteSecureMemory(const void* pv) {
    static std::atomic<bool> s_bLogged{false};
    if (!NySecureIsLocked(pv) && !s_bLogged.exchange(true)) {
        NY_LOG(LOG_ERROR, "secure memory could not be locked: PINs may be swapped out");
    }
}
