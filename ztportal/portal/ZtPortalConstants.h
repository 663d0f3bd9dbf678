#pragma once

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"

/// Folder of all of the vendor's applications, in the user's application-support folder.
extern ZT_EXPORT const ZtString COMPANY_NAME;
/// Folder name for the library's own data. For hosts; the library does not use it.
extern ZT_EXPORT const ZtString APP_SUBFOLDERNAME;
/// File name of a local copy of the configuration document.
extern ZT_EXPORT const ZtString APP_CONFIGURATIONFILE;
/// Bundle identifier of the companion application. It receives every request by broadcast, and its
/// property list "ghost" can switch the test mode on.
extern ZT_EXPORT const ZtString GHOST_BUNDLE_IDENT;
