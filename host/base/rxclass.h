#pragma once
// Run-time classes: every class of the host tells its name, its base and, where it has one, the name under
// which it stands in drawing files. Descriptors are constants that live as long as the program.
#include <memory>
#include <string_view>

class KvRxObject;

/// Descriptor of one class.
class KvRxClass {
 public:
  using Factory = KvRxObject* (*)();

  /// `dxfName` is empty and `create` null for classes that stand in no file. Texts must live on.
  KvRxClass(const wchar_t* name, const KvRxClass* base, const wchar_t* dxfName = L"",
            Factory create = nullptr);

  const wchar_t* name() const { return name_; }
  /// The type name in drawing files ("LINE"), or an empty text.
  const wchar_t* dxfName() const { return dxfName_; }
  const KvRxClass* myParent() const { return base_; }
  bool isDerivedFrom(const KvRxClass* other) const;
  /// A new object of this class, owned by the caller; null for an abstract class.
  KvRxObject* create() const { return create_ ? create_() : nullptr; }

  /// The class of that file name or class name, exactly as spelt; null when there is none.
  static const KvRxClass* findByDxfName(std::wstring_view dxfName);
  static const KvRxClass* findByName(std::wstring_view name);

 private:
  const wchar_t* name_;
  const KvRxClass* base_;
  const wchar_t* dxfName_;
  Factory create_;
};

/// Root of all classes with a descriptor.
class KvRxObject {
 public:
  virtual ~KvRxObject() = default;
  static const KvRxClass* desc();
  virtual const KvRxClass* isA() const { return desc(); }
  bool isKindOf(const KvRxClass* wanted) const { return wanted && isA()->isDerivedFrom(wanted); }

 protected:
  KvRxObject() = default;
  KvRxObject(const KvRxObject&) = default;
  KvRxObject& operator=(const KvRxObject&) = default;
};

/// Stands in a class declaration; KVRX_DEFINE... below stands once in a source file.
#define KVRX_DECLARE(type)                                                                  \
 public:                                                                                    \
  static const KvRxClass* desc();                                                           \
  const KvRxClass* isA() const override {                                                   \
    return desc();                                                                          \
  }                                                                                         \
  static type* cast(KvRxObject* object) {                                                   \
    return object && object->isKindOf(desc()) ? static_cast<type*>(object) : nullptr;       \
  }                                                                                         \
  static const type* cast(const KvRxObject* object) {                                       \
    return object && object->isKindOf(desc()) ? static_cast<const type*>(object) : nullptr; \
  }

#define KVRX_DEFINE_ABSTRACT(type, base)                 \
  const KvRxClass* type::desc() {                        \
    static const KvRxClass own(L"" #type, base::desc()); \
    return &own;                                         \
  }

#define KVRX_DEFINE(type, base, dxfName)                                    \
  const KvRxClass* type::desc() {                                           \
    static const KvRxClass own(L"" #type, base::desc(), dxfName,            \
                               []() -> KvRxObject* { return new type(); }); \
    return &own;                                                            \
  }                                                                         \
  [[maybe_unused]] static const KvRxClass* const k##type##Registered = type::desc();
