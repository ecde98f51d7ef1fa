// The port's share of the configuration file: measures, the baud-rate
// detection script, the negative-response code and one ECU per "UCE"
// element. Every element is searched for anywhere in the document. A re-read
// runs on the port's current state: missing values keep the previous ones,
// and the ECUs of earlier reads stay.
#include "port/SimuPort.h"

#include "core/CheckedArray.h"
#include "core/NumberText.h"
#include "ecu/SimuECU.h"
#include "platform/TDomData.h"

#include <ace/Guard_T.h>

namespace {

// Every element named `tag`, in document order.
ACE_Array<TDomData> elementsNamed(const TDomData &document, const wchar_t *tag) {
  ACE_Array<TDomData> found;
  document.getSubNodesByTagName(tag, found, true);
  return found;
}

ACE_WString attributeOf(const TDomData &element, const wchar_t *name) {
  ACE_WString value;
  element.getAttributeValue(name, value);
  return value;
}

// Sets `field` from a decimal attribute; a missing or empty one keeps it.
void readDecimalAttribute(const TDomData &element, const wchar_t *name, float &field) {
  const ACE_WString text = attributeOf(element, name);
  if (!text.empty())
    field = decimalNumber(text);
}

} // namespace

void SimuPort::readConfiguration(const TDomData &document) {
  // Everything is read from the document, and the new ECUs load their
  // scenarios, before the port's lock is taken: the host's calls wait only
  // for the values to be stored.
  const ACE_Array<TDomData> detection = elementsNamed(document, L"DETBAUDRATE");
  ACE_Array<ACE_WString> script;
  resizeArray(script, detection.size());
  for (size_t i = 0; i < detection.size(); ++i)
    detection[i].getContent(script[i]);

  const ACE_Array<TDomData> voltages = elementsNamed(document, L"VOLTAGES");
  const ACE_Array<TDomData> measures = elementsNamed(document, L"CANMESPHYS");

  // An extension attribute on the box's state element.
  ACE_Array<TDomData> stateElements = elementsNamed(document, L"CAN_DEVICESTATE");
  if (stateElements.size() == 0)
    stateElements = elementsNamed(document, L"DEVICESTATE");
  lossOfCommunication =
      stateElements.size() != 0 && attributeOf(stateElements[0], L"lossOfCom") == L"1";

  ACE_WString negative(L"80");
  const ACE_Array<TDomData> negativeElements = elementsNamed(document, L"NEGATIVE_RESPONSE");
  if (negativeElements.size() != 0)
    negativeElements[0].getContent(negative);

  // Elements without a usable targetAddress, idRx or idTx are passed over
  // silently; the scenario path may be missing or empty.
  std::vector<std::unique_ptr<SimuECU>> created;
  const ACE_Array<TDomData> units = elementsNamed(document, L"UCE");
  for (size_t i = 0; i < units.size(); ++i) {
    const ACE_WString scenario = attributeOf(units[i], L"scenario");
    if (attributeOf(units[i], L"targetAddress").empty())
      continue;
    const ACE_WString idRx = attributeOf(units[i], L"idRx");
    if (idRx.empty())
      continue;
    const ACE_WString idTx = attributeOf(units[i], L"idTx");
    if (idTx.empty())
      continue;
    created.push_back(
        std::make_unique<SimuECU>(hexNumber(idRx), hexNumber(idTx), scenario, negative));
  }

  ACE_GUARD(ACE_Recursive_Thread_Mutex, guard, lock);
  if (detection.size() != 0)
    assignArray(baudRateResults, script);
  if (voltages.size() != 0)
    readDecimalAttribute(voltages[0], L"VBatt", batteryVoltage);
  if (measures.size() != 0) {
    readDecimalAttribute(measures[0], L"CanHmin", canHmin);
    readDecimalAttribute(measures[0], L"CanHmax", canHmax);
    readDecimalAttribute(measures[0], L"CanLmin", canLmin);
    readDecimalAttribute(measures[0], L"CanLmax", canLmax);
  }
  negativeCode = negative;
  ownedEcus.reserve(ownedEcus.size() + created.size());
  for (auto &ecu : created) {
    SimuECU *added = ecu.get();
    ownedEcus.push_back(std::move(ecu));
    // The table keeps the first ECU ever bound under an identifier; a later
    // one with the same idTx is only free.
    ecuByIdTx.bind(added->idTx, added);
    freeEcus.insert(added);
  }
}
