#pragma once

#include "runtime/Describe.h"
#include "runtime/Reactor.h"

namespace Macsecd::Test {

/// A member of `Shelf::book`, with a parameter beside its key, and a part that this process alone
/// knows.
class Book final : public Vesk::DescribedEntity<Book> {
 public:
  enum Attribute : uint8_t { kTitle, kReader, kMark };
  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onTitle() {}
    virtual void onReader() {}
    virtual void onMark(Vesk::Name const&) {}
    virtual void onMarkImmediate() {}
    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.value(kTitle, &R::onTitle);
      v.value(kReader, &R::onReader);
      v.template collection<Vesk::Name>(kMark, &R::onMark, &R::onMarkImmediate);
    }
  };
  class Notifiee : public NotifieeConst {};

  Book(uint32_t number, uint16_t pages)
      : DescribedEntity(Vesk::Name("book")), number_{number}, pages_(pages) {}

  Lumo::IntfId fwkKey() const { return Lumo::IntfId(Vesk::String8(std::to_string(number_))); }
  Vesk::String8 const& title() const { return title_; }
  void titleIs(Vesk::String8 const& v) { write<kTitle>(title_, v); }
  uint32_t reader() const { return reader_; }
  void readerIs(uint32_t v) { write<kReader>(reader_, v); }
  void markIs(Vesk::Name const& key, uint32_t v) { valueIs<kMark>(mark_, key, v); }

  template <class V>
  static constexpr void describe(V&& v) {
    v.parameter("number", &Book::number_);
    v.parameter("pages", &Book::pages_);
    v.value("title", &Book::title_, &Book::titleIs);
    Vesk::ofProcess(v).value("reader", &Book::reader_, &Book::readerIs);
    v.values("mark", &Book::mark_, &Book::markIs);
  }

 private:
  uint32_t number_;
  uint16_t pages_;
  Vesk::String8 title_;
  uint32_t reader_ = 0;
  Vesk::ValueMap<Vesk::Name, uint32_t> mark_;
};

/// A root that no program has.
class Shelf final : public Vesk::DescribedEntity<Shelf> {
 public:
  enum Attribute : uint8_t { kBook };
  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onBook(Lumo::IntfId const&) {}
    virtual void onBookImmediate() {}
    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.template collection<Lumo::IntfId>(kBook, &R::onBook, &R::onBookImmediate);
    }
  };
  class Notifiee : public NotifieeConst {};

  explicit Shelf(Vesk::Name const& name = "shelf") : DescribedEntity(name) {}

  Vesk::Ptr<Book> book(Lumo::IntfId key) const { return book_[key]; }
  Vesk::Ptr<Book> bookIs(Lumo::IntfId key, uint16_t pages) {
    uint32_t const number = Vesk::valueFromStrep<uint32_t>(key.stringValue().view());
    return memberIs<kBook>(book_, key, [&] { return Vesk::make<Book>(number, pages); });
  }
  void bookDel(Lumo::IntfId key) { memberDel<kBook>(book_, key); }

  template <class V>
  static constexpr void describe(V&& v) {
    v.members("book", &Shelf::book_, &Shelf::bookIs);
  }

 private:
  Vesk::HashMap<Book, Lumo::IntfId> book_;
};

}  // namespace Macsecd::Test
