#include "tools/ztreport/description/PoolDescription.h"

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tools/ztreport/description/FieldDescription.h"
#include "tools/ztreport/description/Keys.h"
#include "tools/ztreport/description/PoolKeys.h"

namespace zt::tools {

namespace {

ZtDate timeStampOf(const JsonValue& object) {
  const Json* timeStamp = object.member("timeStamp");
  if (timeStamp == nullptr) return ZtDate::now();
  return object.child("timeStamp", *timeStamp).date();
}

/// Reads the members of a pool: those that every pool has, and those that `readOwn` knows.
template <class ReadOwn>
void readPool(const JsonValue& object, ZtPortalPool& pool, ReadOwn readOwn) {
  object.eachMember([&](const std::string& key, const JsonValue& value) {
    if (key == "kind" || key == "timeStamp") return true;  // read before
    if (key == "fields") {
      addFields(value, *pool.fields());
      return true;
    }
    return readOwn(key, value);
  });
}

/// Reads one entry of a list of a pool into the record that was made for it.
template <class Record, std::size_t kCount>
void readRecord(const JsonValue& object, Record& record,
                const std::array<Key<Record>, kCount>& keys) {
  object.eachMember([&](const std::string& key, const JsonValue& value) {
    return setByKey(keys, record, key, value);
  });
}

void addGeneric(const JsonValue& object, ZtPortalData& document, MachineCheck /*check*/) {
  const auto pool = document.addPool(nullptr, timeStampOf(object));
  readPool(object, *pool, [&](const std::string& key, const JsonValue& value) {
    if (key != "poolType") return false;
    pool->setPoolType(value.string());
    return true;
  });
}

void addExecution(const JsonValue& object, ZtPortalData& document, MachineCheck /*check*/) {
  const auto pool = document.addPoolExecution(timeStampOf(object));
  readPool(object, *pool, [&](const std::string& key, const JsonValue& value) {
    if (key != "steps") {
      return setByKey(kExecutionKeys, *pool, key, value);
    }
    for (const JsonValue& step : value.list()) {
      readRecord(step, *pool->addStep(timeStampOf(step), nullptr, 0), kStepKeys);
    }
    return true;
  });
}

template <class Pool, std::shared_ptr<Pool> (ZtPortalData::*kAdd)(const ZtDate&)>
void addRun(const JsonValue& object, ZtPortalData& document, MachineCheck /*check*/) {
  const auto pool = (document.*kAdd)(timeStampOf(object));
  readPool(object, *pool, [&](const std::string& key, const JsonValue& value) {
    return setByKey(kRunKeys<Pool>, *pool, key, value);
  });
}

void addDiagnose(const JsonValue& object, ZtPortalData& document, MachineCheck /*check*/) {
  const auto pool = document.addPoolDiagnose(timeStampOf(object));
  readPool(object, *pool, [&](const std::string& key, const JsonValue& value) {
    if (key != "steps") return false;
    for (const JsonValue& step : value.list()) {
      readRecord(step, *pool->addStep(timeStampOf(step), nullptr, 0), kDiagnoseStepKeys);
    }
    return true;
  });
}

void addManager(const JsonValue& object, ZtPortalData& document, MachineCheck /*check*/) {
  const auto pool = document.addPoolConnectionManager(timeStampOf(object));
  readPool(object, *pool, [&](const std::string& key, const JsonValue& value) {
    return setByKey(kManagerKeys, *pool, key, value);
  });
}

/// Adds an application to its list for every entry of a list, and says that the key was known.
template <class Add, class Keys>
bool addApplications(const JsonValue& list, const Keys& keys, Add add) {
  for (const JsonValue& application : list.list()) readRecord(application, *add(), keys);
  return true;
}

bool addApplicationsByKey(Computer& pool, const std::string& key, const JsonValue& list) {
  if (key == "browsers") {
    return addApplications(list, kBrowserKeys,
                           [&] { return pool.addBrowser(nullptr, nullptr, 0); });
  }
  if (key == "emailClients") {
    return addApplications(list, kEMailClientKeys,
                           [&] { return pool.addEMailClient(nullptr, nullptr, 0); });
  }
  if (key == "firewallApps") {
    return addApplications(list, kFirewallKeys,
                           [&] { return pool.addFirewallApp(nullptr, nullptr); });
  }
  if (key == "antivirusApps") {
    return addApplications(list, kAntivirusKeys,
                           [&] { return pool.addAntivirusApp(nullptr, nullptr); });
  }
  return false;
}

void addComputer(const JsonValue& object, ZtPortalData& document, MachineCheck check) {
  const Json* autoCheck = object.member("autoCheck");
  const bool checks = autoCheck != nullptr && object.child("autoCheck", *autoCheck).boolean();
  const auto pool = document.addPoolComputerSystemWithAutoCheck(
      timeStampOf(object), checks && check == MachineCheck::Allowed);
  readPool(object, *pool, [&](const std::string& key, const JsonValue& value) {
    return key == "autoCheck" || setByKey(kComputerKeys, *pool, key, value) ||
           addApplicationsByKey(*pool, key, value);
  });
}

struct Kind {
  std::string_view name;
  void (*add)(const JsonValue&, ZtPortalData&, MachineCheck);
};
constexpr std::array<Kind, 7> kKinds{{
    {"generic", addGeneric},
    {"execution", addExecution},
    {"deinstallation", addRun<ZtPortalPoolDeinstallation, &ZtPortalData::addPoolDeinstallation>},
    {"initialization", addRun<ZtPortalPoolInitialization, &ZtPortalData::addPoolInitialization>},
    {"diagnose", addDiagnose},
    {"connectionManager", addManager},
    {"computerSystem", addComputer},
}};

}  // namespace

void addPool(const JsonValue& object, ZtPortalData& document, MachineCheck check) {
  std::string known;
  for (const Kind& kind : kKinds) known += (known.empty() ? "" : ", ") + std::string(kind.name);
  const std::string name = discriminator(object, "kind", known);
  for (const Kind& kind : kKinds) {
    if (kind.name == name) return kind.add(object, document, check);
  }
  object.child("kind", *object.member("kind")).fail("no such kind; it is one of " + known);
}

}  // namespace zt::tools
