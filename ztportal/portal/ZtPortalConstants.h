// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"

// A host may have macros of these names. They stay, and hide the constants from that host.
#pragma push_macro("COMPANY_NAME")
#pragma push_macro("APP_SUBFOLDERNAME")
#pragma push_macro("APP_CONFIGURATIONFILE")
#pragma push_macro("GHOST_BUNDLE_IDENT")
#undef COMPANY_NAME
#undef APP_SUBFOLDERNAME
#undef APP_CONFIGURATIONFILE
#undef GHOST_BUNDLE_IDENT

/// Folder of all of the vendor's applications, in the user's application-support folder.
extern ZT_EXPORT const ZtString COMPANY_NAME;
/// Folder name for the library's own data. For hosts; the library does not use it.
extern ZT_EXPORT const ZtString APP_SUBFOLDERNAME;
/// File name of a local copy of the configuration document.
extern ZT_EXPORT const ZtString APP_CONFIGURATIONFILE;
/// Bundle identifier of the companion application. It receives every request by broadcast, and its
/// property list "ghost" can switch the test mode on.
extern ZT_EXPORT const ZtString GHOST_BUNDLE_IDENT;

#pragma pop_macro("COMPANY_NAME")
#pragma pop_macro("APP_SUBFOLDERNAME")
#pragma pop_macro("APP_CONFIGURATIONFILE")
#pragma pop_macro("GHOST_BUNDLE_IDENT")
