#pragma once
// A thread-safe cache of shared values with a bound on the bytes it keeps: the least recently
// used values go first. Values still held by a caller stay alive after they leave the cache.

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace lattica::standalone {

template <typename Key, typename Value>
class LruCache {
 public:
  explicit LruCache(size_t byteBudget) : budget_(byteBudget) {}

  // The value under the key, made by make() (a std::shared_ptr<Value>) when it is missing and
  // kept if it fits the budget. An exception from make() leaves the cache as it was. make() runs
  // under the cache's lock, so a value is made once however many threads ask for it.
  template <typename Make>
  std::shared_ptr<Value> getOrMake(const Key& key, Make&& make) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto found = index_.find(key);
    if (found != index_.end()) {
      order_.splice(order_.begin(), order_, found->second);
      ++hits_;
      return found->second->value;
    }
    std::shared_ptr<Value> value = make();
    ++misses_;
    const size_t bytes = value->bytes();
    if (bytes > budget_) return value;
    while (used_ + bytes > budget_ && !order_.empty()) evictOldest();
    order_.push_front(Entry{key, value, bytes});
    index_.emplace(key, order_.begin());
    used_ += bytes;
    return value;
  }

  int64_t hits() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return hits_;
  }
  int64_t misses() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return misses_;
  }
  size_t usedBytes() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return used_;
  }

 private:
  struct Entry {
    Key key;
    std::shared_ptr<Value> value;
    size_t bytes;
  };
  using Order = std::list<Entry>;

  void evictOldest() {
    const Entry& oldest = order_.back();
    used_ -= oldest.bytes;
    index_.erase(oldest.key);
    order_.pop_back();
  }

  const size_t budget_;
  mutable std::mutex mutex_;
  Order order_;  // most recently used first
  std::map<Key, typename Order::iterator> index_;
  size_t used_ = 0;
  int64_t hits_ = 0;
  int64_t misses_ = 0;
};

}  // namespace lattica::standalone
