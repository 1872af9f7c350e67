#pragma once

#include <array>
#include <string_view>

namespace KELP::Wifi {

/// The countries' names, each at its value; written out here, because a name that was forgotten or misplaced
/// in the enumeration would go unnoticed if its own names were asked.
// clang-format off
inline constexpr std::array<std::string_view, 198> kCountryNames{
    "AD", "AE", "AF", "AG", "AI", "AL", "AM", "AN", "AR", "AS",  // 0
    "AT", "AU", "AW", "AX", "AZ", "BA", "BB", "BD", "BE", "BF",  // 10
    "BG", "BH", "BL", "BM", "BN", "BO", "BR", "BS", "BT", "BY",  // 20
    "BZ", "CA", "CF", "CH", "CI", "CK", "CL", "CM", "CN", "CO",  // 30
    "CR", "CW", "CX", "CY", "CZ", "DE", "DK", "DM", "DO", "DZ",  // 40
    "EC", "EE", "EG", "ES", "ET", "FI", "FK", "FM", "FO", "FR",  // 50
    "GB", "GD", "GE", "GF", "GG", "GH", "GI", "GL", "GP", "GR",  // 60
    "GT", "GU", "GY", "HK", "HM", "HN", "HR", "HT", "HU", "ID",  // 70
    "IE", "IL", "IM", "IN", "IQ", "IS", "IT", "JE", "JM", "JO",  // 80
    "JP", "KE", "KH", "KN", "KR", "KW", "KY", "KZ", "LB", "LC",  // 90
    "LI", "LK", "LS", "LT", "LU", "LV", "MA", "MC", "MD", "ME",  // 100
    "MF", "MH", "MK", "MM", "MN", "MO", "MP", "MQ", "MR", "MS",  // 110
    "MT", "MU", "MV", "MW", "MX", "MY", "NA", "NC", "NF", "NG",  // 120
    "NI", "NL", "NO", "NP", "NU", "NZ", "OM", "PA", "PE", "PF",  // 130
    "PG", "PH", "PK", "PL", "PM", "PR", "PT", "PW", "PY", "QA",  // 140
    "RE", "RO", "RS", "RU", "RW", "SA", "SE", "SG", "SH", "SI",  // 150
    "SJ", "SK", "SM", "SN", "SR", "ST", "SV", "SX", "TC", "TD",  // 160
    "TF", "TG", "TH", "TN", "TR", "TT", "TW", "TZ", "UA", "UG",  // 170
    "UM", "US", "UY", "UZ", "VA", "VC", "VE", "VG", "VI", "VN",  // 180
    "VU", "WF", "WS", "YE", "YT", "ZA", "ZW",  // 190
    "MaxCountryCode",
};
// clang-format on

}  // namespace KELP::Wifi
