// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Reports the runs of a desktop application to its customer's reporting server.
///
/// This header includes the whole public interface, except `ztportal/base/ZtFormat.h`, which needs
/// {fmt}. A host creates a document, fills it with pools, and sends it:
///
///     auto document = ZtPortalData::initWithValues(configurationUrl, false, "Kelvane",
///                                                  "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}",
///                                                  "2.1");
///     document->addPool("CUSTOM", ZtDate::now())->addString("RESULT", "OK");
///     bool accepted = document->reportToServer();
///
/// Reports that the server does not accept are saved as files in the user's data folder;
/// `ZtPortalData::sendSavedReports` of any later document sends them again. `ZtReport` does all of
/// this for one run of an application.
///
/// Everything runs on the caller's thread. Several threads may use the library, each with its own
/// objects. The library prints nothing, starts no thread and never ends the program; it reports
/// failures by return values and by the exception `ZtException`.
///
/// Unless libcurl was built with c-ares, it looks up the name of a server or proxy in a temporary
/// thread of its own: at most one in the process at any time. A look-up that does not end within
/// the two seconds of its request leaves that thread behind until the system gives up; meanwhile
/// every request that needs a name fails at once, as without a network. Addresses need no thread.

#if __cplusplus < 202002L
#error "ztportal needs C++20: compile with -std=c++20 or a later standard."
#endif

#include "ztportal/Version.h"
#include "ztportal/background/ZtBackgroundSender.h"
#include "ztportal/base/ZtAtomic.h"
#include "ztportal/base/ZtBOOL.h"
#include "ztportal/base/ZtDate.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtLog.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/platform/http/ZtDeliveryError.h"
#include "ztportal/platform/http/ZtTransportOptions.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"
#include "ztportal/pools/ZtLanguage.h"
#include "ztportal/pools/ZtPortalDef.h"
#include "ztportal/pools/ZtPortalPool.h"
#include "ztportal/pools/ZtPortalPoolAntivirusApp.h"
#include "ztportal/pools/ZtPortalPoolArray.h"
#include "ztportal/pools/ZtPortalPoolBOOL.h"
#include "ztportal/pools/ZtPortalPoolBrowser.h"
#include "ztportal/pools/ZtPortalPoolComputerSystem.h"
#include "ztportal/pools/ZtPortalPoolConnectionManager.h"
#include "ztportal/pools/ZtPortalPoolDeinstallation.h"
#include "ztportal/pools/ZtPortalPoolDiagnose.h"
#include "ztportal/pools/ZtPortalPoolDiagnoseStep.h"
#include "ztportal/pools/ZtPortalPoolEMailClient.h"
#include "ztportal/pools/ZtPortalPoolExecution.h"
#include "ztportal/pools/ZtPortalPoolExecutionStep.h"
#include "ztportal/pools/ZtPortalPoolField.h"
#include "ztportal/pools/ZtPortalPoolFirewallApp.h"
#include "ztportal/pools/ZtPortalPoolFloat.h"
#include "ztportal/pools/ZtPortalPoolInitialization.h"
#include "ztportal/pools/ZtPortalPoolInteger.h"
#include "ztportal/pools/ZtPortalPoolString.h"
#include "ztportal/pools/ZtPortalRunResult.h"
#include "ztportal/portal/ZtDelivery.h"
#include "ztportal/portal/ZtPortalConstants.h"
#include "ztportal/portal/ZtPortalData.h"
#include "ztportal/portal/ZtReportDescription.h"
#include "ztportal/portal/ZtReportStore.h"
#include "ztportal/portal/ZtUtils.h"
#include "ztportal/report/ZtApplicationIds.h"
#include "ztportal/report/ZtReport.h"
#include "ztportal/report/ZtReportConstants.h"
#include "ztportal/system/ZtApplicationIdentifiers.h"
#include "ztportal/system/ZtHost.h"
#include "ztportal/system/ZtPrivacy.h"
#include "ztportal/system/ZtSystemInfos.h"
