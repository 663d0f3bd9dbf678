// SPDX-License-Identifier: Apache-2.0
#include "ztportal/report/ZtReportConstants.h"

#include "ztportal/report/ZtApplicationIds.h"

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

constinit const ZtString REP_APPID_ZT_INSTALLER =
    ZtString::constant<"{F0862C47-59CA-4B15-9612-01F52E295C59}">();
constinit const ZtString REP_APPID_ZT_SETUPASSISTANT =
    ZtString::constant<"{2B2A985D-6459-489A-A61D-3E68EB137814}">();
constinit const ZtString REP_APPID_ZT_REPAIRTOOL =
    ZtString::constant<"{5326173B-AD35-4E00-A859-85C0DCE7A46E}">();
constinit const ZtString REP_APPID_ZT_CONNECTIONMANAGER =
    ZtString::constant<"{063732DE-9D2C-4143-9EB6-D69E5EE35F62}">();

constinit const ZtString REP_APPID_NORVANTEL_INSTALLER =
    ZtString::constant<"{6FEE95A9-E375-4E43-8405-3899B0FC3EE0}">();
constinit const ZtString REP_APPID_NORVANTEL_SETUPASSISTANT =
    ZtString::constant<"{77B58678-657B-461D-9BA9-7F96BD5CCFC4}">();
constinit const ZtString REP_APPID_NORVANTEL_REPAIRTOOL =
    ZtString::constant<"{B113641E-7657-4D4F-BDD9-182EF34EEC31}">();
constinit const ZtString REP_APPID_NORVANTEL_CONNECTIONMANAGER =
    ZtString::constant<"{43019364-5F7A-4FBB-8E50-0779EEADE78A}">();

constinit const ZtString REP_APPID_BRISALINK_INSTALLER =
    ZtString::constant<"{2269C39E-92B4-4E20-84C7-AFAA89837938}">();
constinit const ZtString REP_APPID_BRISALINK_SETUPASSISTANT =
    ZtString::constant<"{D37D19D3-C258-4061-8D3F-BE9540A606E5}">();
constinit const ZtString REP_APPID_BRISALINK_REPAIRTOOL =
    ZtString::constant<"{0AFE993C-2BA0-4FEF-A3BA-E2FBCA76E398}">();
constinit const ZtString REP_APPID_BRISALINK_CONNECTIONMANAGER =
    ZtString::constant<"{90BD1D7A-BA7E-4BE8-B6CC-AD4EACDDFEBF}">();

constinit const ZtString REP_APPID_CAVOMEDIA_INSTALLER =
    ZtString::constant<"{4D0FA742-7E13-40C1-8B4E-B388A30FB233}">();
constinit const ZtString REP_APPID_CAVOMEDIA_SETUPASSISTANT =
    ZtString::constant<"{0D9C8737-0B09-4363-8E3A-372AA5E681CB}">();
constinit const ZtString REP_APPID_CAVOMEDIA_REPAIRTOOL =
    ZtString::constant<"{8BAF2A4C-E64B-452C-B9B2-8514C183C5D2}">();
constinit const ZtString REP_APPID_CAVOMEDIA_CONNECTIONMANAGER =
    ZtString::constant<"{1DF48E92-9FED-49F8-9AF3-45E050358972}">();

constinit const ZtString REP_APPID_QUILLNET_INSTALLER =
    ZtString::constant<"{873BD530-C8AA-4642-ACDA-E01AA59DFAC6}">();
constinit const ZtString REP_APPID_QUILLNET_SETUPASSISTANT =
    ZtString::constant<"{3B0392EF-2DCE-4C3E-8C4B-39F352463498}">();
constinit const ZtString REP_APPID_QUILLNET_REPAIRTOOL =
    ZtString::constant<"{C062DA5F-0E91-4723-833D-C3E46EF783D1}">();
constinit const ZtString REP_APPID_QUILLNET_CONNECTIONMANAGER =
    ZtString::constant<"{5EA996A0-4762-4E12-8DCF-C75A39ADE18D}">();
