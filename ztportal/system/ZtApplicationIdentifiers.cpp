// SPDX-License-Identifier: Apache-2.0
#include "ztportal/system/ZtApplicationIdentifiers.h"

constinit const ZtString APP_MAIL_IDENT = ZtString::constant<"com.apple.mail">();
constinit const ZtString APP_TBIRD_IDENT = ZtString::constant<"org.mozilla.thunderbird">();
constinit const ZtString APP_ENTOURAGE_IDENT = ZtString::constant<"com.microsoft.Entourage">();
constinit const ZtString APP_OUTLOOK_IDENT = ZtString::constant<"com.microsoft.Outlook">();
constinit const ZtString APP_SAFARI_IDENT = ZtString::constant<"com.apple.Safari">();
constinit const ZtString APP_FIREFOX_IDENT = ZtString::constant<"org.mozilla.firefox">();
constinit const ZtString APP_OPERA_IDENT = ZtString::constant<"com.operasoftware.Opera">();
constinit const ZtString APP_CHROME_IDENT = ZtString::constant<"com.google.Chrome">();
