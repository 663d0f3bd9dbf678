// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/ztinbox/http/ListenAddress.h"
#include "tools/ztinbox/http/Session.h"

namespace zt::inbox {

/// Serves HTTP/1.1 on `socket` until `stopDescriptor` becomes readable, then ends every connection
/// and its threads. Of a request target in absolute form (a proxy request), only the path counts,
/// for any host.
///
/// The calling thread waits for all clients at once, so a client that sends or receives slowly
/// occupies no thread. Each complete request is handled by a thread of a pool, which also serves
/// the following requests of that connection as long as they come without a pause.
void serveHttp(const ListeningSocket& socket, const HttpHandlers& handlers,
               const HttpLimits& limits, int stopDescriptor);

}  // namespace zt::inbox
