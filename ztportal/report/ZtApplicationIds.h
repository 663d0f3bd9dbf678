// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"

/// IDs of each customer's applications: GUIDs in braces. A host passes its own:
///
///     auto report = ZtReport::initWithCustomerAndGuid(REP_CUSTOMERID_NORVANTEL,
///                                                     REP_APPID_NORVANTEL_REPAIRTOOL);
///
/// The library itself does not read them.

extern ZT_EXPORT const ZtString REP_APPID_ZT_INSTALLER;
extern ZT_EXPORT const ZtString REP_APPID_ZT_SETUPASSISTANT;
extern ZT_EXPORT const ZtString REP_APPID_ZT_REPAIRTOOL;
extern ZT_EXPORT const ZtString REP_APPID_ZT_CONNECTIONMANAGER;

extern ZT_EXPORT const ZtString REP_APPID_NORVANTEL_INSTALLER;
extern ZT_EXPORT const ZtString REP_APPID_NORVANTEL_SETUPASSISTANT;
extern ZT_EXPORT const ZtString REP_APPID_NORVANTEL_REPAIRTOOL;
extern ZT_EXPORT const ZtString REP_APPID_NORVANTEL_CONNECTIONMANAGER;

extern ZT_EXPORT const ZtString REP_APPID_BRISALINK_INSTALLER;
extern ZT_EXPORT const ZtString REP_APPID_BRISALINK_SETUPASSISTANT;
extern ZT_EXPORT const ZtString REP_APPID_BRISALINK_REPAIRTOOL;
extern ZT_EXPORT const ZtString REP_APPID_BRISALINK_CONNECTIONMANAGER;

extern ZT_EXPORT const ZtString REP_APPID_CAVOMEDIA_INSTALLER;
extern ZT_EXPORT const ZtString REP_APPID_CAVOMEDIA_SETUPASSISTANT;
extern ZT_EXPORT const ZtString REP_APPID_CAVOMEDIA_REPAIRTOOL;
extern ZT_EXPORT const ZtString REP_APPID_CAVOMEDIA_CONNECTIONMANAGER;

extern ZT_EXPORT const ZtString REP_APPID_QUILLNET_INSTALLER;
extern ZT_EXPORT const ZtString REP_APPID_QUILLNET_SETUPASSISTANT;
extern ZT_EXPORT const ZtString REP_APPID_QUILLNET_REPAIRTOOL;
extern ZT_EXPORT const ZtString REP_APPID_QUILLNET_CONNECTIONMANAGER;
