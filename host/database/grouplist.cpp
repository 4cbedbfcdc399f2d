#include "host/database/grouplist.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace {

static_assert(sizeof(wchar_t) == 4, "texts and numbers share words of four bytes");

/// What stands before each value.
struct Head {
  std::int16_t code;
  KvDxfKind kind;
  std::uint8_t shape;
};
static_assert(sizeof(Head) == sizeof(wchar_t));

constexpr std::uint8_t kDimensions = 0x0F;
constexpr std::uint8_t kHasZ = 0x10;    // of points
constexpr std::uint8_t kIsWide = 0x20;  // of whole numbers: eight bytes

constexpr std::size_t kWordsOfDouble = 2;

Head headAt(const wchar_t* at) {
  return std::bit_cast<Head>(*at);
}

Head headOf(const KvDxfGroup& group) {
  Head head{group.code, group.kind, static_cast<std::uint8_t>(group.dimensions & kDimensions)};
  switch (group.kind) {
    case KvDxfKind::Text:
    case KvDxfKind::Binary:
    case KvDxfKind::Real:
      break;
    case KvDxfKind::Point:
      if (group.dimensions != 2 || group.point.z != 0) head.shape |= kHasZ;
      break;
    default:
      if (group.integer != static_cast<std::int32_t>(group.integer)) head.shape |= kIsWide;
      break;
  }
  return head;
}

/// The words of a group, its head included; `length` is a text's.
std::size_t wordsOf(Head head, std::size_t length) {
  switch (head.kind) {
    case KvDxfKind::Text:
    case KvDxfKind::Binary:
      return 2 + length;
    case KvDxfKind::Real:
      return 1 + kWordsOfDouble;
    case KvDxfKind::Point:
      return 1 + kWordsOfDouble * (head.shape & kHasZ ? 3 : 2);
    default:
      return head.shape & kIsWide ? 3 : 2;
  }
}

void write(wchar_t* at, const KvDxfGroup& group, Head head) {
  *at++ = std::bit_cast<wchar_t>(head);
  switch (group.kind) {
    case KvDxfKind::Text:
    case KvDxfKind::Binary:
      *at++ = static_cast<wchar_t>(group.text.size());
      std::copy(group.text.begin(), group.text.end(), at);
      break;
    case KvDxfKind::Real:
      std::memcpy(at, &group.point.x, sizeof(double));
      break;
    case KvDxfKind::Point: {
      const double coordinates[] = {group.point.x, group.point.y, group.point.z};
      std::memcpy(at, coordinates, sizeof(double) * (head.shape & kHasZ ? 3 : 2));
      break;
    }
    default:
      if (head.shape & kIsWide)
        std::memcpy(at, &group.integer, sizeof group.integer);
      else
        *at = static_cast<wchar_t>(group.integer);
      break;
  }
}

std::size_t textLength(Head head, const wchar_t* at) {
  return head.kind == KvDxfKind::Text || head.kind == KvDxfKind::Binary ? static_cast<std::uint32_t>(at[1])
                                                                        : 0;
}

}  // namespace

KvDxfGroup KvDbGroupList::Iterator::operator*() const {
  const Head head = headAt(at_);
  const wchar_t* value = at_ + 1;
  KvDxfGroup group;
  group.code = head.code;
  group.kind = head.kind;
  group.dimensions = head.shape & kDimensions;
  switch (head.kind) {
    case KvDxfKind::Text:
    case KvDxfKind::Binary:
      group.text = {value + 1, textLength(head, at_)};
      break;
    case KvDxfKind::Real:
      std::memcpy(&group.point.x, value, sizeof(double));
      break;
    case KvDxfKind::Point: {
      double coordinates[3] = {};
      std::memcpy(coordinates, value, sizeof(double) * (head.shape & kHasZ ? 3 : 2));
      group.point = {coordinates[0], coordinates[1], coordinates[2]};
      break;
    }
    default:
      if (head.shape & kIsWide)
        std::memcpy(&group.integer, value, sizeof group.integer);
      else
        group.integer = static_cast<std::int32_t>(*value);
      break;
  }
  return group;
}

KvDbGroupList::Iterator& KvDbGroupList::Iterator::operator++() {
  const Head head = headAt(at_);
  at_ += wordsOf(head, textLength(head, at_));
  return *this;
}

KvDbGroupList::KvDbGroupList(std::span<const KvDxfGroup> groups) {
  std::size_t words = 0;
  for (const KvDxfGroup& group : groups) words += wordsOf(headOf(group), group.text.size());
  reserve(words);
  for (const KvDxfGroup& group : groups) append(group);
}

KvDbGroupList::KvDbGroupList(const KvDbGroupList& other) {
  reserve(other.used_);
  std::copy_n(other.words_.get(), other.used_, words_.get());
  used_ = other.used_;
}

KvDbGroupList::KvDbGroupList(KvDbGroupList&& other) noexcept
    : words_(std::move(other.words_)),
      used_(std::exchange(other.used_, 0)),
      capacity_(std::exchange(other.capacity_, 0)) {}

KvDbGroupList& KvDbGroupList::operator=(KvDbGroupList other) noexcept {
  words_ = std::move(other.words_);
  used_ = std::exchange(other.used_, 0);
  capacity_ = std::exchange(other.capacity_, 0);
  return *this;
}

std::uint32_t KvDbGroupList::count() const {
  return static_cast<std::uint32_t>(std::distance(begin(), end()));
}

void KvDbGroupList::reserve(std::size_t words) {
  if (words <= capacity_) return;
  if (words > std::numeric_limits<std::uint32_t>::max()) throw std::bad_alloc();
  std::unique_ptr<wchar_t[]> fresh(new wchar_t[words]);
  std::copy_n(words_.get(), used_, fresh.get());
  words_ = std::move(fresh);
  capacity_ = static_cast<std::uint32_t>(words);
}

void KvDbGroupList::append(const KvDxfGroup& group) {
  const Head head = headOf(group);
  const std::size_t words = used_ + wordsOf(head, group.text.size());
  if (words > capacity_)
    reserve(std::max(
        words, std::min<std::size_t>(std::size_t{capacity_} * 2, std::numeric_limits<std::uint32_t>::max())));
  write(words_.get() + used_, group, head);
  used_ = static_cast<std::uint32_t>(words);
}

bool KvDbGroupList::setInteger(int code, std::int64_t value) {
  KvDbGroupList fresh;
  bool isSet = false;
  for (KvDxfGroup group : *this) {
    if (!isSet && group.code == code) {
      group.integer = value;
      isSet = true;
    }
    fresh.append(group);
  }
  if (isSet) *this = std::move(fresh);
  return isSet;
}
