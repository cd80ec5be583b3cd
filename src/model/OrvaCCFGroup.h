#pragma once

#include <string>

#include "support/containers/LumoArray.h"
#include "support/values/LumoAttributeAccess.h"

class OrvaEvent;
class OrvaModel;
class OrvaProbabilityDistribution;

// A common-cause failure group: basic events that can fail together, the total failure probability
// Q of one of them, and the factors of a parametric model. Expanding the group rewrites the model:
// each member becomes the gate "its independent failure, or any common-cause failure of a subset
// that it belongs to", and each of these failures is a new basic event.
//
// The models are those of U. Kapur, A. Mosleh et al., "Procedures for treating common cause
// failures in safety and reliability studies", NUREG/CR-4780, 1988.
class OrvaCCFGroup : public LumoAttributeAccess<OrvaCCFGroup> {
 public:
  enum Type : int { UNKNOWN = -1, BETA_FACTOR = 0, MGL = 1, ALPHA_FACTOR = 2, PHI_FACTOR = 3 };

  // Every subset of the group becomes an event, except in the beta-factor model: larger groups
  // can't be enumerated.
  static constexpr int MAXIMUM_NUMBER_OF_MEMBERS = 16;
  // The highest level at which a factor may be given.
  static constexpr int MAXIMUM_LEVEL = 1000000;

  OrvaCCFGroup(OrvaModel* model, Type type, const char* name);
  // Unlinks the members, which stay; deletes the factors and the distribution.
  ~OrvaCCFGroup();
  OrvaCCFGroup(const OrvaCCFGroup&) = delete;
  OrvaCCFGroup& operator=(const OrvaCCFGroup&) = delete;
  static void Delete(void* group);

  OrvaModel* GetModel() const { return _model; }
  Type GetType() const { return _type; }
  // The model of that name in the model format, or UNKNOWN; its name, null for UNKNOWN.
  static Type GetType(const char* name);
  static const char* GetTypeName(Type type);
  const char* GetName() const { return _name; }
  bool IsExpanded() const { return _isExpanded; }

  // Members, from 0, in the order of reading. Not owned; each is linked to the group.
  int GetNumberOfMembers() const { return _members.GetNumberOfItems(); }
  OrvaEvent* GetMember(int i) const;
  // The name, "group-member", of the gate that member i becomes.
  std::string GetNameOfMemberGate(int i) const;
  void SetMember(int i, OrvaEvent* member);
  void AddMember(OrvaEvent* member);

  // Factors by level, from 0; null when there is none. Owned; setting one deletes the factor that
  // it replaces.
  OrvaProbabilityDistribution* GetFactor(int level) const;
  // -1 without factors.
  int GetHighestLevel() const { return _factors.GetIndexOfLastItem(); }
  void SetFactor(int level, OrvaProbabilityDistribution* factor);
  // Does nothing without a factor at the first level.
  void MoveFactor(int from, int to);

  OrvaProbabilityDistribution* GetDistribution() const { return _distribution; }
  // Deletes the former one and takes ownership.
  void SetDistribution(OrvaProbabilityDistribution* distribution);

  int CompareName(const char* name) const;
  int CompareNames(const OrvaCCFGroup* other) const { return CompareName(other->_name); }
  static int CompareName(const void* group, const void* name);
  static int CompareNames(const void* a, const void* b);

  // Rewrites the model; nothing happens the second time. A group without distribution leaves its
  // new basic events without expression.
  void Expand();

  // Offered to users of the class; the program itself does not call what follows.

  void SetName(const char* name);
  int GetFlag() const { return _flag; }
  void SetFlag(int flag) { _flag = flag; }
  void ResetFlag() { _flag = 0; }
  int GetNumberOfFactors() const { return _factors.GetNumberOfItems(); }
  // At the level after the highest one, 0 in a group without factors.
  void AddFactor(OrvaProbabilityDistribution* factor);

 private:
  friend LumoAttributeAccess<OrvaCCFGroup>;

  // What the members share while the group is expanded.
  struct Expansion;

  void _Unlink(OrvaEvent* member);
  void _ExpandMember(Expansion& expansion, int i);
  void _ExpandMemberForBetaFactor(Expansion& expansion, int i);
  OrvaEvent* _ReplaceMemberByIndependentEvent(Expansion& expansion, int i);
  OrvaEvent* _GetEventOfSubset(Expansion& expansion, std::size_t subset);
  OrvaEvent* _FindOrAddBasicEvent(const std::string& name);
  void _AssociateProbabilityDistributionToBasicEvent(Expansion& expansion, OrvaEvent* event,
                                                     int level);
  OrvaProbabilityDistribution* _NewExpressionOfLevel(int level) const;
  OrvaProbabilityDistribution* _CopyFactor(int level) const;
  OrvaProbabilityDistribution* _NewComplementOfFactor(int level) const;
  OrvaProbabilityDistribution* _NewCoefficient(int level) const;
  OrvaProbabilityDistribution* _NewShareOfFactor(int level) const;

  OrvaModel* _model;
  Type _type;
  char* _name;
  LumoArray _members;
  LumoArray _factors;
  OrvaProbabilityDistribution* _distribution = nullptr;
  LumoAttributeList _attributes;
  bool _isExpanded = false;
  int _flag = 0;
};
