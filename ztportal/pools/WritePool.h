#pragma once

#include <string>

#include "ztportal/base/ZtString.h"
#include "ztportal/pools/PoolWriter.h"
#include "ztportal/pools/ZtPortalPool.h"

namespace zt {

/// Writes a typed pool: its frame, its own fields, which `ownFields` gives to the writer, and the
/// generic fields behind them.
///
///     writePool(*this, prefix, xml, soap, [this](PoolWriter& pool) {
///       pool.string("DEVICE_MODEL", _deviceModel);
///       pool.integer("SMS_SENT", _sentSMS);
///     });
template <class OwnFields>
void writePool(const ZtPortalPool& pool, const ZtString& prefix, std::string& xml, bool soap,
               OwnFields ownFields) {
  PoolWriter writer(prefix, xml, soap);
  writer.begin(pool.poolType(), pool.timeStamp());
  writer.beginFields();
  ownFields(writer);
  pool.addFieldsToXml(writer.fieldPrefix(), xml, soap);
  writer.endFields();
  writer.end();
}

}  // namespace zt
