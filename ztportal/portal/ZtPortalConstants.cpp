// SPDX-License-Identifier: Apache-2.0
#include "ztportal/portal/ZtPortalConstants.h"

#include "ztportal/system/HostFolder.h"

constinit const ZtString COMPANY_NAME = ZtString::constant<zt::kVendorName>();
constinit const ZtString APP_SUBFOLDERNAME = ZtString::constant<"ztportal">();
constinit const ZtString APP_CONFIGURATIONFILE = ZtString::constant<"configuration.xml">();
constinit const ZtString GHOST_BUNDLE_IDENT = ZtString::constant<"com.kelvane.ZtPortalGhost">();
