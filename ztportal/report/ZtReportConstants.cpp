#include "ztportal/report/ZtReportConstants.h"

constinit const ZtString REP_CUSTOMERID_ZT = ZtString::constant<"Kelvane">();
constinit const ZtString REP_URL_ZT =
    ZtString::constant<"http://" ZT_CONFIGURATION_HOST "/reporting/kelvane.xml">();
constinit const ZtString REP_CUSTOMERID_NORVANTEL = ZtString::constant<"Norvantel">();
constinit const ZtString REP_URL_NORVANTEL =
    ZtString::constant<"http://" ZT_CONFIGURATION_HOST "/reporting/norvantel.xml">();
constinit const ZtString REP_CUSTOMERID_BRISALINK = ZtString::constant<"Brisalink">();
constinit const ZtString REP_URL_BRISALINK =
    ZtString::constant<"http://" ZT_CONFIGURATION_HOST "/reporting/brisalink.xml">();
constinit const ZtString REP_CUSTOMERID_CAVOMEDIA = ZtString::constant<"cavomedia">();
constinit const ZtString REP_URL_CAVOMEDIA =
    ZtString::constant<"http://" ZT_CONFIGURATION_HOST "/reporting/cavomedia.xml">();
constinit const ZtString REP_CUSTOMERID_QUILLNET = ZtString::constant<"Quillnet">();
constinit const ZtString REP_URL_QUILLNET =
    ZtString::constant<"http://" ZT_CONFIGURATION_HOST "/reporting/quillnet.xml">();
