#pragma once

namespace KELP::Wifi {

enum class CountryCode : unsigned short {
  // clang-format off
  AD, AE, AF, AG, AI, AL, AM, AN, AR, AS,
  AT, AU, AW, AX, AZ, BA, BB, BD, BE, BF,
  BG, BH, BL, BM, BN, BO, BR, BS, BT, BY,
  BZ, CA, CF, CH, CI, CK, CL, CM, CN, CO,
  CR, CW, CX, CY, CZ, DE, DK, DM, DO, DZ,
  EC, EE, EG, ES, ET, FI, FK, FM, FO, FR,
  GB, GD, GE, GF, GG, GH, GI, GL, GP, GR,
  GT, GU, GY, HK, HM, HN, HR, HT, HU, ID,
  IE, IL, IM, IN, IQ, IS, IT, JE, JM, JO,
  JP, KE, KH, KN, KR, KW, KY, KZ, LB, LC,
  LI, LK, LS, LT, LU, LV, MA, MC, MD, ME,
  MF, MH, MK, MM, MN, MO, MP, MQ, MR, MS,
  MT, MU, MV, MW, MX, MY, NA, NC, NF, NG,
  NI, NL, NO, NP, NU, NZ, OM, PA, PE, PF,
  PG, PH, PK, PL, PM, PR, PT, PW, PY, QA,
  RE, RO, RS, RU, RW, SA, SE, SG, SH, SI,
  SJ, SK, SM, SN, SR, ST, SV, SX, TC, TD,
  TF, TG, TH, TN, TR, TT, TW, TZ, UA, UG,
  UM, US, UY, UZ, VA, VC, VE, VG, VI, VN,
  VU, WF, WS, YE, YT, ZA, ZW,
  // clang-format on
  MaxCountryCode,
};

}  // namespace KELP::Wifi
