#pragma once

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"

/// The folder of all the vendor's applications in the user's application-support folder.
extern ZT_EXPORT const ZtString COMPANY_NAME;
/// The folder for data of this library itself, for hosts; the library does not use it.
extern ZT_EXPORT const ZtString APP_SUBFOLDERNAME;
/// File name of a locally kept configuration document.
extern ZT_EXPORT const ZtString APP_CONFIGURATIONFILE;
/// Bundle identifier of the companion application, which listens to what is sent and whose
/// property list "ghost" switches the test mode on.
extern ZT_EXPORT const ZtString GHOST_BUNDLE_IDENT;
