// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"

/// The IDs of the known customers and the URLs of their configuration documents. The host of the
/// URLs is a build option (`ZT_CONFIGURATION_HOST`).
extern ZT_EXPORT const ZtString REP_CUSTOMERID_ZT;
extern ZT_EXPORT const ZtString REP_URL_ZT;
extern ZT_EXPORT const ZtString REP_CUSTOMERID_NORVANTEL;
extern ZT_EXPORT const ZtString REP_URL_NORVANTEL;
extern ZT_EXPORT const ZtString REP_CUSTOMERID_BRISALINK;
extern ZT_EXPORT const ZtString REP_URL_BRISALINK;
extern ZT_EXPORT const ZtString REP_CUSTOMERID_CAVOMEDIA;
extern ZT_EXPORT const ZtString REP_URL_CAVOMEDIA;
extern ZT_EXPORT const ZtString REP_CUSTOMERID_QUILLNET;
extern ZT_EXPORT const ZtString REP_URL_QUILLNET;
