// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"

/// Bundle identifiers of the e-mail clients and web browsers that the inventory of a computer looks
/// for, in the order of the inventory.
extern ZT_EXPORT const ZtString APP_MAIL_IDENT;
extern ZT_EXPORT const ZtString APP_TBIRD_IDENT;
extern ZT_EXPORT const ZtString APP_ENTOURAGE_IDENT;
extern ZT_EXPORT const ZtString APP_OUTLOOK_IDENT;
extern ZT_EXPORT const ZtString APP_SAFARI_IDENT;
extern ZT_EXPORT const ZtString APP_FIREFOX_IDENT;
extern ZT_EXPORT const ZtString APP_OPERA_IDENT;
extern ZT_EXPORT const ZtString APP_CHROME_IDENT;
