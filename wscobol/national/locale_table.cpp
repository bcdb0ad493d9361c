// The table of locales, and the two searches in it.
#include "national/locale_table.h"

namespace zor {

// clang-format off
constexpr std::array<LocaleRow, kLocaleRows> kLocaleTable = {{
    {"CA_ES", {0x20, 0x20}, "QBX-285", "QBX-1145", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"DA_DK", {0x20, 0x20}, "QBX-277", "QBX-1142", {"QBX-865", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"DE_DE", {0x20, 0x20}, "QBX-273", "QBX-1141", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"DE_CH", {0x20, 0x20}, "QBX-500", "QBX-1148", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"EN_AU", {0x20, 0x20}, "QBX-037", "QBX-1140", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"EN_BE", {0x20, 0x20}, "QBX-500", "QBX-1144", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"EN_GB", {0x20, 0x20}, "QBX-037", "QBX-1140", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"EN_JP", {0x20, 0x20}, "QBX-037", "QBX-1140", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"EN_US", {0x20, 0x20}, "QBX-037", "QBX-1140", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"EN_ZA", {0x20, 0x20}, "QBX-037", "QBX-1140", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"ES_ES", {0x20, 0x20}, "QBX-284", "QBX-1145", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"FI_FI", {0x20, 0x20}, "QBX-278", "QBX-1143", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"FR_BE", {0x20, 0x20}, "QBX-297", "QBX-1148", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"FR_CA", {0x20, 0x20}, "QBX-037", "QBX-1140", {"QBX-863", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"FR_CH", {0x20, 0x20}, "QBX-500", "QBX-1148", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"FR_FR", {0x20, 0x20}, "QBX-297", "QBX-1148", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"IS_IS", {0x20, 0x20}, "QBX-871", "QBX-1149", {"QBX-861", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"IT_CH", {0x20, 0x20}, "QBX-500", "QBX-1148", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"IT_IT", {0x20, 0x20}, "QBX-280", "QBX-1144", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"NL_BE", {0x20, 0x20}, "QBX-500", "QBX-1148", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"NL_NL", {0x20, 0x20}, "QBX-037", "QBX-1140", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"NO_NO", {0x20, 0x20}, "QBX-277", "QBX-1142", {"QBX-865", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"PT_BR", {0x20, 0x20}, "QBX-037", "QBX-1140", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"PT_PT", {0x20, 0x20}, "QBX-037", "QBX-1140", {"QBX-860", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"SQ_AL", {0x20, 0x20}, "QBX-500", "QBX-1148", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"SV_SE", {0x20, 0x20}, "QBX-278", "QBX-1143", {"QBX-437", "QBX-850", "QBX-1252", "QBX-1252", "ISO8859-1", "ISO8859-15"}},
    {"HR_HR", {0x20, 0x20}, "QBX-870", "QBX-1153", {"QBX-852", "QBX-852", "QBX-1250", "QBX-1250", "ISO8859-2", ""}},
    {"CS_CZ", {0x20, 0x20}, "QBX-870", "QBX-1153", {"QBX-852", "QBX-852", "QBX-1250", "QBX-1250", "ISO8859-2", ""}},
    {"HU_HU", {0x20, 0x20}, "QBX-870", "QBX-1153", {"QBX-852", "QBX-852", "QBX-1250", "QBX-1250", "ISO8859-2", ""}},
    {"PL_PL", {0x20, 0x20}, "QBX-870", "QBX-1153", {"QBX-852", "QBX-852", "QBX-1250", "QBX-1250", "ISO8859-2", ""}},
    {"RO_RO", {0x20, 0x20}, "QBX-870", "QBX-1153", {"QBX-852", "QBX-852", "QBX-1250", "QBX-1250", "ISO8859-2", ""}},
    {"SH_SP", {0x20, 0x20}, "QBX-870", "QBX-1153", {"QBX-852", "QBX-852", "QBX-1250", "QBX-1250", "ISO8859-2", ""}},
    {"SK_SK", {0x20, 0x20}, "QBX-870", "QBX-1153", {"QBX-852", "QBX-852", "QBX-1250", "QBX-1250", "ISO8859-2", ""}},
    {"SL_SI", {0x20, 0x20}, "QBX-870", "QBX-1153", {"QBX-852", "QBX-852", "QBX-1250", "QBX-1250", "ISO8859-2", ""}},
    {"BE_BY", {0x20, 0x20}, "QBX-1025", "QBX-1154", {"QBX-866", "QBX-855", "QBX-1251", "QBX-1251", "ISO8859-5", ""}},
    {"BG_BG", {0x20, 0x20}, "QBX-1025", "QBX-1154", {"QBX-866", "QBX-855", "QBX-1251", "QBX-1251", "ISO8859-5", ""}},
    {"MK_MK", {0x20, 0x20}, "QBX-1025", "QBX-1154", {"QBX-866", "QBX-855", "QBX-1251", "QBX-1251", "ISO8859-5", ""}},
    {"RU_RU", {0x20, 0x20}, "QBX-1025", "QBX-1154", {"QBX-866", "QBX-855", "QBX-1251", "QBX-1251", "ISO8859-5", ""}},
    {"UK_UA", {0x20, 0x20}, "QBX-1025", "QBX-1154", {"QBX-866", "QBX-855", "QBX-1251", "QBX-1251", "ISO8859-5", ""}},
    {"AR_AA", {0x20, 0x20}, "QBX-16804", "QBX-420", {"QBX-864", "QBX-1046", "QBX-1256", "QBX-1256", "ISO8859-6", ""}},
    {"EL_GR", {0x20, 0x20}, "QBX-4971", "QBX-875", {"QBX-737", "QBX-869", "QBX-1253", "QBX-1253", "ISO8859-7", ""}},
    {"IW_IL", {0x20, 0x20}, "QBX-12712", "QBX-424", {"QBX-862", "QBX-856", "QBX-1255", "QBX-1255", "ISO8859-8", ""}},
    {"ET_EE", {0x20, 0x20}, "", "QBX-1157", {"QBX-775", "QBX-922", "QBX-1257", "QBX-1257", "ISO8859-13", "ISO8859-4"}},
    {"LV_LV", {0x20, 0x20}, "QBX-1112", "QBX-1156", {"QBX-775", "QBX-921", "QBX-1257", "QBX-1257", "ISO8859-13", "ISO8859-4"}},
    {"LT_LT", {0x20, 0x20}, "QBX-1112", "QBX-1156", {"QBX-775", "QBX-921", "QBX-1257", "QBX-1257", "ISO8859-13", "ISO8859-4"}},
    {"TR_TR", {0x20, 0x20}, "QBX-1026", "QBX-1155", {"QBX-857", "QBX-857", "QBX-1254", "QBX-1254", "ISO8859-9", ""}},
    {"ZH_CN", {0xA1, 0xA1}, "", "QBX-1388", {"QBX-1381", "QBX-1386", "QBX-1386", "QBX-1386", "QBX-eucCN", "GB18030"}},
    {"ZH_TW", {0xA1, 0x40}, "QBX-1371", "QBX-937", {"QBX-948", "QBX-950", "QBX-950", "QBX-1370", "QBX-eucTW", ""}},
    {"JA_JP", {0x81, 0x40}, "QBX-939", "QBX-1399", {"QBX-932", "QBX-942", "QBX-943", "QBX-943", "QBX-eucJP", ""}},
    {"JA_JP", {0x81, 0x40}, "QBX-930", "QBX-1390", {"QBX-932", "QBX-942", "QBX-943", "QBX-943", "QBX-eucJP", ""}},
    {"KO_KR", {0xA1, 0xA1}, "QBX-933", "QBX-1364", {"QBX-949", "QBX-1363", "QBX-1363", "QBX-1363", "QBX-eucKR", ""}},
    {"TH_TH", {0x20, 0x20}, "", "QBX-9030", {"QBX-874", "QBX-874", "QBX-1162", "QBX-1162", "TIS-620", ""}},
    {"VI_VT", {0x20, 0x20}, "QBX-1130", "QBX-1164", {"QBX-1129", "QBX-1129", "QBX-1258", "QBX-1258", "QBX-1129", ""}},
}};
// clang-format on

int rowOfLocale(std::string_view upperName) {
    const std::string_view key = upperName.substr(0, kLocaleKeyLength);
    for (int row = 0; row < kLocaleRows; ++row) {
        if (key == kLocaleTable[static_cast<std::size_t>(row)].locale) {
            return row;
        }
    }
    return kFallbackRow;
}

int rowOfEbcdicName(std::string_view upperName) {
    for (int row = 0; row < kLocaleRows; ++row) {
        const LocaleRow &candidate = kLocaleTable[static_cast<std::size_t>(row)];
        if (upperName == candidate.ebcdicbase || upperName == candidate.ebcdicdefault) {
            return row;
        }
    }
    return -1;
}

} // namespace zor
