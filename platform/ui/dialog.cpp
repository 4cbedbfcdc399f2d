#include "platform/ui/dialog.h"

#include <algorithm>

#include "platform/env/environment.h"
#include "platform/text/number.h"

namespace platform {
namespace {

bool inRange(int index, std::size_t count) {
  return index >= 0 && static_cast<std::size_t>(index) < count;
}

std::size_t countOf(const Control& control) {
  return control.kind == ControlKind::Grid ? control.rows.size() : control.items.size();
}

bool digitsOnly(const CString& text) {
  return text.SpanIncluding(L"0123456789") == text;
}

}  // namespace

Dialog::Dialog(DialogTemplate from) : template_(std::move(from)) {}

Dialog::~Dialog() {
  finish();
}

Control* Dialog::find(int id) {
  for (Control& control : template_.controls)
    if (control.id == id && id != -1) return &control;
  return nullptr;
}

const Control* Dialog::control(int id) const {
  return const_cast<Dialog*>(this)->find(id);
}

bool Dialog::setItemText(int id, const CString& text) {
  Control* control = find(id);
  if (control) control->text = text;
  return control != nullptr;
}

CString Dialog::getItemText(int id) const {
  const Control* found = control(id);
  return found ? found->text : CString();
}

int Dialog::getItemInt(int id) const {
  return parseInt(getItemText(id).view());
}

bool Dialog::setEnabled(int id, bool enabled) {
  Control* control = find(id);
  if (control) control->enabled = enabled;
  return control != nullptr;
}

bool Dialog::isEnabled(int id) const {
  const Control* found = control(id);
  return found && found->enabled;
}

bool Dialog::setVisible(int id, bool visible) {
  Control* control = find(id);
  if (control) control->visible = visible;
  return control != nullptr;
}

void Dialog::check(Control& control, bool checked) {
  if (checked && control.kind == ControlKind::Radio)
    for (Control& other : template_.controls)
      if (other.kind == ControlKind::Radio && other.group == control.group) other.checked = false;
  control.checked = checked;
}

bool Dialog::setChecked(int id, bool checked) {
  Control* control = find(id);
  if (control) check(*control, checked);
  return control != nullptr;
}

bool Dialog::isChecked(int id) const {
  const Control* found = control(id);
  return found && found->checked;
}

bool Dialog::setPicture(int id, const std::filesystem::path& file, const CString& inWords) {
  Control* control = find(id);
  if (!control) return false;
  control->picture = file;
  control->text = inWords;
  return true;
}

bool Dialog::setRange(int id, int minimum, int maximum) {
  Control* control = find(id);
  if (!control) return false;
  control->minimum = minimum;
  control->maximum = std::max(minimum, maximum);
  control->position = std::clamp(control->position, control->minimum, control->maximum);
  return true;
}

bool Dialog::setPosition(int id, int position) {
  Control* control = find(id);
  if (!control) return false;
  control->position = std::clamp(position, control->minimum, control->maximum);
  CString text;
  text.Format(L"%d", control->position);
  if (control->kind == ControlKind::Spin && control->buddy != 0) setItemText(control->buddy, text);
  return true;
}

int Dialog::position(int id) const {
  const Control* found = control(id);
  if (!found) return 0;
  if (found->kind == ControlKind::Spin && found->buddy != 0 && !getItemText(found->buddy).IsEmpty())
    return std::clamp(getItemInt(found->buddy), found->minimum, found->maximum);
  return found->position;
}

bool Dialog::setItems(int id, std::vector<CString> items) {
  Control* control = find(id);
  if (!control) return false;
  control->items = std::move(items);
  control->selected.clear();
  return true;
}

int Dialog::addItem(int id, const CString& text) {
  Control* control = find(id);
  if (!control) return -1;
  control->items.push_back(text);
  return static_cast<int>(control->items.size()) - 1;
}

bool Dialog::removeItem(int id, int index) {
  Control* control = find(id);
  if (!control || !inRange(index, control->items.size())) return false;
  control->items.erase(control->items.begin() + index);
  std::erase(control->selected, index);
  for (int& selected : control->selected)
    if (selected > index) --selected;
  return true;
}

std::vector<CString> Dialog::items(int id) const {
  const Control* found = control(id);
  return found ? found->items : std::vector<CString>();
}

bool Dialog::setSelected(int id, std::vector<int> indices) {
  Control* control = find(id);
  if (!control) return false;
  std::erase_if(indices, [&](int index) { return !inRange(index, countOf(*control)); });
  std::sort(indices.begin(), indices.end());
  indices.erase(std::unique(indices.begin(), indices.end()), indices.end());
  if (control->kind == ControlKind::Combo && !indices.empty())
    control->text = control->items[static_cast<std::size_t>(indices.front())];
  control->selected = std::move(indices);
  return true;
}

std::vector<int> Dialog::selected(int id) const {
  const Control* found = control(id);
  return found ? found->selected : std::vector<int>();
}

bool Dialog::setGrid(int id, std::vector<CString> columns, std::vector<std::vector<CString>> rows) {
  Control* control = find(id);
  if (!control) return false;
  for (auto& row : rows) row.resize(columns.size());
  control->columns = std::move(columns);
  control->rows = std::move(rows);
  control->selected.clear();
  return true;
}

bool Dialog::setCell(int id, int row, int column, const CString& text) {
  Control* control = find(id);
  if (!control || !inRange(row, control->rows.size())) return false;
  auto& cells = control->rows[static_cast<std::size_t>(row)];
  if (!inRange(column, cells.size())) return false;
  cells[static_cast<std::size_t>(column)] = text;
  return true;
}

CString Dialog::cell(int id, int row, int column) const {
  const Control* found = control(id);
  if (!found || !inRange(row, found->rows.size())) return {};
  const auto& cells = found->rows[static_cast<std::size_t>(row)];
  return inRange(column, cells.size()) ? cells[static_cast<std::size_t>(column)] : CString();
}

void Dialog::endDialog(int result) {
  if (ended_) return;
  ended_ = true;
  result_ = result;
}

bool Dialog::setTimer(int id, std::chrono::milliseconds period) {
  TimerQueue* queue = Environment::current().timers;
  if (!queue) return false;
  killTimer(id);
  timers_[id] = queue->set(period, [this, id](TimerQueue::Id) { onTimer(id); });
  return true;
}

void Dialog::killTimer(int id) {
  const auto found = timers_.find(id);
  if (found == timers_.end()) return;
  if (TimerQueue* queue = Environment::current().timers) queue->kill(found->second);
  timers_.erase(found);
}

void Dialog::post(unsigned message, std::uintptr_t first, std::intptr_t second) {
  invoke([=, this] { onMessage(message, first, second); });
}

void Dialog::invoke(std::function<void()> action) {
  {
    const std::lock_guard lock(mutex_);
    posted_.push_back(std::move(action));
  }
  arrived_.notify_one();
}

bool Dialog::pump(std::chrono::milliseconds wait) {
  TimerQueue* queue = Environment::current().timers;
  bool done = queue && queue->runDue() > 0;
  if (done) wait = {};
  if (const auto due = queue ? queue->nextDue() : std::nullopt)
    wait = std::clamp(*due - queue->now(), std::chrono::milliseconds(0), wait);
  std::deque<std::function<void()>> taken;
  {
    std::unique_lock lock(mutex_);
    arrived_.wait_for(lock, wait, [&] { return !posted_.empty(); });
    taken.swap(posted_);
  }
  for (const auto& action : taken) action();
  if (!done && queue) done = queue->runDue() > 0;
  return done || !taken.empty();
}

Control* Dialog::forUser(int id, UserAction& answer) {
  Control* control = find(id);
  answer = !control || !control->visible ? UserAction::NoControl
           : !control->enabled           ? UserAction::Disabled
                                         : UserAction::Done;
  return answer == UserAction::Done ? control : nullptr;
}

UserAction Dialog::userPress(int id) {
  UserAction answer;
  Control* control = forUser(id, answer);
  if (!control) return answer;
  if (control->kind == ControlKind::Check)
    control->checked = !control->checked;
  else if (control->kind == ControlKind::Radio)
    check(*control, true);
  else if (control->kind != ControlKind::Button)
    return UserAction::WrongKind;
  onCommand(id);
  return UserAction::Done;
}

UserAction Dialog::userType(int id, const CString& text) {
  UserAction answer;
  Control* control = forUser(id, answer);
  if (!control) return answer;
  if (control->kind == ControlKind::Combo) {
    const auto found = std::find(control->items.begin(), control->items.end(), text);
    if (found == control->items.end() && !control->freeText) return UserAction::Refused;
    control->selected.clear();
    if (found != control->items.end()) control->selected = {static_cast<int>(found - control->items.begin())};
  } else if (control->kind != ControlKind::Edit) {
    return UserAction::WrongKind;
  } else if (control->readOnly || (control->digitsOnly && !digitsOnly(text))) {
    return UserAction::Refused;
  }
  control->text = text;
  onChanged(id);
  return UserAction::Done;
}

UserAction Dialog::userSelect(int id, std::vector<int> indices) {
  UserAction answer;
  Control* control = forUser(id, answer);
  if (!control) return answer;
  const bool combo = control->kind == ControlKind::Combo;
  if (!combo && control->kind != ControlKind::List && control->kind != ControlKind::Grid)
    return UserAction::WrongKind;
  const bool outside = std::any_of(indices.begin(), indices.end(),
                                   [&](int index) { return !inRange(index, countOf(*control)); });
  if (outside || (indices.size() > 1 && !control->multiple) || (combo && indices.empty()))
    return UserAction::Refused;
  setSelected(id, std::move(indices));
  onChanged(id);
  return UserAction::Done;
}

UserAction Dialog::userStep(int id, int steps) {
  UserAction answer;
  Control* control = forUser(id, answer);
  if (!control) return answer;
  if (control->kind != ControlKind::Spin) return UserAction::WrongKind;
  const long long wanted = static_cast<long long>(position(id)) + steps;
  setPosition(id, static_cast<int>(std::clamp<long long>(wanted, control->minimum, control->maximum)));
  onChanged(id);
  return UserAction::Done;
}

UserAction Dialog::userEditCell(int id, int row, int column, const CString& text) {
  UserAction answer;
  Control* control = forUser(id, answer);
  if (!control) return answer;
  if (control->kind != ControlKind::Grid) return UserAction::WrongKind;
  if (control->readOnly || !setCell(id, row, column, text)) return UserAction::Refused;
  onChanged(id);
  return UserAction::Done;
}

void Dialog::userClose() {
  onClose();
}

void Dialog::onCommand(int id) {
  if (id == kIdOk) endDialog(kIdOk);
  if (id == kIdCancel) onClose();
}

void Dialog::begin() {
  ended_ = false;
  result_ = 0;
  onInit();
}

void Dialog::finish() {
  while (!timers_.empty()) killTimer(timers_.begin()->first);
  const std::lock_guard lock(mutex_);
  posted_.clear();
}

}  // namespace platform
