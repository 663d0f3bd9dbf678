// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <concepts>
#include <memory>
#include <tuple>
#include <vector>

#include "ztportal/base/ZtAtomic.h"
#include "ztportal/base/ZtDate.h"
#include "ztportal/portal/ZtPortalData.h"

/// How pools and records are created whose classes are known only from the field tables.
namespace zt {

/// How a document adds the pools that need only a timestamp.
inline constexpr std::tuple kAdders{
    &ZtPortalData::addPoolExecution,         &ZtPortalData::addPoolDeinstallation,
    &ZtPortalData::addPoolInitialization,    &ZtPortalData::addPoolDiagnose,
    &ZtPortalData::addPoolConnectionManager, &ZtPortalData::addPoolComputerSystem};

/// Adds a pool of the class; a generic one has no type yet. Null if it could not be added.
template <class Pool>
std::shared_ptr<Pool> addPoolOf(ZtPortalData& document, const ZtDate& timeStamp) {
  if constexpr (std::same_as<Pool, ZtPortalPool>) {
    return document.addPool(nullptr, timeStamp);
  } else {
    using Adder = std::shared_ptr<Pool> (ZtPortalData::*)(const ZtDate&);
    return (document.*std::get<Adder>(kAdders))(timeStamp);
  }
}

/// A record without a name. Only steps have a timestamp.
template <class Record>
std::shared_ptr<Record> newRecord(const ZtDate& timeStamp) {
  if constexpr (requires { Record::initWithValues(ZtDate(), nullptr, 0); }) {
    return Record::initWithValues(timeStamp, nullptr, 0);
  } else {
    return Record::initWithNameAndVersion(nullptr, nullptr);
  }
}

// The list that a member of a pool holds.
template <class Record>
std::vector<std::shared_ptr<Record>>& listOf(std::vector<std::shared_ptr<Record>>& member) {
  return member;
}
template <class List>
List& listOf(const std::shared_ptr<List>& member) {
  return *member;
}
template <class List>
List& listOf(ZtAtomic<std::shared_ptr<List>>& member) {
  return *member.unguarded();
}

}  // namespace zt
