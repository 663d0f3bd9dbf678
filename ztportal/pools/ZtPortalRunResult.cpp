#include "ztportal/pools/ZtPortalRunResult.h"

#include "ztportal/pools/PoolWriter.h"

void ZtPortalRunResult::addStartTimeTo(zt::PoolWriter& pool) const {
  pool.date("START_TIME", _startTime);
}

void ZtPortalRunResult::addEndTimeTo(zt::PoolWriter& pool) const {
  pool.date("END_TIME", _endTime);
}

void ZtPortalRunResult::addResultTo(zt::PoolWriter& pool) const {
  pool.string("END_RESULTSTRING", _endResultString);
  pool.string("END_RESULTCODE", _endResultCode);
  pool.string("END_ERRORMESSAGESTRING", _endErrorMessageString);
  pool.string("END_ERRORMESSAGECODE", _endErrorMessageCode);
}

void ZtPortalRunResult::addSuccessTo(zt::PoolWriter& pool) const {
  pool.boolean("SUCCESSFULL", _successfull);
}
