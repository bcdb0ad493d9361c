// The state is set up at the first need and closed by the run-time's end, through the process
// anchor. Before and after, the plain locale's names stand in.
#include "national/services.h"

#include <cstring>

#include "base/anchors.h"
#include "base/message_list.h"
#include "codepage.h"
#include "national/icu.h"
#include "national/locale_table.h"

namespace zor {
namespace {

Services state;

void closeServices() {
    closeConverter(state.native);
    closeConverter(state.ebcdic);
    if (state.collator != nullptr) {
        icuCollation()->ucol_close(state.collator);
    }
    state = Services{};
}

void setUp() {
    closeServices();
    _zorcSetCodePages();
    Proccom *const process = proccom();
    const char *locale = kPlainLocale;
    const char *ebcdic = kLocaleTable[kFallbackRow].ebcdicdefault;
    if (process != nullptr) {
        process->convclose = closeServices;
        locale = process->localename;
        ebcdic = process->ebcdicname;
    }
    memcpy(state.locale, locale, sizeof state.locale - 1);
    strcpy(state.nativeName, locale + sizeof state.locale);
    strcpy(state.ebcdicName, ebcdic);
    state.ready = process != nullptr;
}

UConverter *&slotOf(Services &services, int32_t page) {
    return page == kNativePage ? services.native : services.ebcdic;
}

const char *nameOfPage(const Services &services, int32_t page) {
    return page == kNativePage ? services.nativeName : services.ebcdicName;
}

} // namespace

Services &services() {
    if (!state.ready) {
        setUp();
    }
    return state;
}

UConverter *cachedConverter(Services &services, int32_t page, int32_t &status) {
    UConverter *&slot = slotOf(services, page);
    if (slot == nullptr) {
        slot = openConverter(nameOfPage(services, page), status);
    }
    return slot;
}

const Translation &translationTo(int32_t page) {
    Services &services = zor::services();
    Translation &translation = page == kEbcdicPage ? services.toEbcdic : services.toNative;
    if (!translation.known) {
        int32_t status = 0;
        UConverter *const native = cachedConverter(services, kNativePage, status);
        UConverter *const ebcdic = cachedConverter(services, kEbcdicPage, status);
        if (native == nullptr || ebcdic == nullptr) {
            translation.kinds.fill(ByteKind::other);
        } else {
            translation = page == kEbcdicPage ? translationBetween(*native, *ebcdic)
                                              : translationBetween(*ebcdic, *native);
        }
    }
    return translation;
}

OpenPage::OpenPage(const char *name, int32_t length) : named_(length > 0) {
    Services &services = zor::services();
    const CodePageName copy = terminatedName(name, length);
    const char *const shown = named_ ? copy.text : nameOfPage(services, length);
    if (named_) {
        converter_ = openConverter(shown, status_);
    } else {
        converter_ = cachedConverter(services, length, status_);
    }
    if (converter_ == nullptr) {
        message::converterNotOpened(shown, status_);
    }
}

OpenPage::~OpenPage() {
    if (named_) {
        closeConverter(converter_);
    }
}

} // namespace zor
