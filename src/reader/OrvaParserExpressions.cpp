// Expressions.

#include <cassert>

#include "model/OrvaModel.h"
#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistribution.h"
#include "reader/OrvaModelElements.h"
#include "reader/OrvaParser.h"
#include "reader/OrvaParserMessages.h"

using namespace OrvaModelElements;
using namespace OrvaParserMessages;
using Distribution = OrvaProbabilityDistribution;

namespace {

Distribution::Type GetTypeOfExpression(const LumoXMLNode* node) {
  return node->IsNode() ? Distribution::GetType(node->GetName()) : Distribution::UNKNOWN;
}

}  // namespace

Distribution* OrvaParser::_DownloadProbabilityDistribution(int& error, const LumoXMLNode* node,
                                                           OrvaModel* model) {
  switch (GetTypeOfExpression(node)) {
    case Distribution::UNKNOWN:
      _Report(error, NOT_A_DISTRIBUTION, node);
      return nullptr;
    case Distribution::PARAMETER:
    case Distribution::BOOL:
    case Distribution::INT:
    case Distribution::FLOAT:
      return _DownloadLeaf(error, node, model);
    default:
      return _DownloadOperation(error, node, model);
  }
}

Distribution* OrvaParser::_DownloadLeaf(int& error, const LumoXMLNode* node, OrvaModel* model) {
  switch (GetTypeOfExpression(node)) {
    case Distribution::BOOL: {
      bool value = false;
      _DownloadBooleanAttribute(error, node, VALUE, value);
      return error != 0 ? nullptr : Distribution::NewBool(model, value);
    }
    case Distribution::INT: {
      int value = 0;
      _DownloadIntegerAttribute(error, node, VALUE, value);
      return error != 0 ? nullptr : Distribution::NewInt(model, value);
    }
    case Distribution::FLOAT: {
      double value = 0.0;
      _DownloadRealAttribute(error, node, VALUE, value);
      return error != 0 ? nullptr : Distribution::NewFloat(model, value);
    }
    default: {
      assert(GetTypeOfExpression(node) == Distribution::PARAMETER);
      const char* name = _DownloadAttribute(error, node, NAME);
      if (name == nullptr) return nullptr;
      OrvaParameter* parameter = model->LookForParameter(name);
      if (parameter == nullptr) parameter = model->AddParameter(name);
      return Distribution::NewParameter(model, parameter);
    }
  }
}

Distribution* OrvaParser::_DownloadOperation(int& error, const LumoXMLNode* node,
                                             OrvaModel* model) {
  const Distribution::Type type = GetTypeOfExpression(node);
  assert(error == 0 && type != Distribution::UNKNOWN);
  Distribution* operation = Distribution::NewDistribution(model, type, nullptr);
  for (const LumoXMLNode* child = node->GetFirstChild(); child != nullptr && error == 0;
       child = child->GetNextSibling()) {
    if (child->IsComment()) continue;
    if (GetTypeOfExpression(child) == Distribution::UNKNOWN) {
      _Report(error, UNKNOWN_OPERAND, child);
    } else if (auto* operand = _DownloadProbabilityDistribution(error, child, model)) {
      operation->AddChild(operand);
    }
  }
  if (error == 0 && !Distribution::CheckNumberOfChildren(type, operation->GetNumberOfChildren())) {
    _Report(error, WRONG_NUMBER_OF_ARGUMENTS, node);
  }
  if (error == 0) return operation;
  OrvaTerm::Delete(operation);
  return nullptr;
}
