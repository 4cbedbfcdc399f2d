#pragma once
// What the function-style calls of the host work on: the parts of the one host that is current.
//
// A KvHostApp fills a context and installs it for its own lifetime. Without a host every pointer is null, and
// the function-style calls answer their failure.

class KvRxDictionary;
class KvDbHostApplicationServices;
class KvEdEditor;
class KvApDocManager;
class KvCmdDocuments;
class KvApLongTransactionManager;

struct KvHostContext {
  KvRxDictionary* registry = nullptr;
  KvDbHostApplicationServices* services = nullptr;
  KvEdEditor* editor = nullptr;
  KvApDocManager* documents = nullptr;
  KvCmdDocuments* commandDocuments = nullptr;
  KvApLongTransactionManager* longTransactions = nullptr;  // where somebody has installed one

  static KvHostContext& current();
};
