#pragma once

#include <memory>
#include <set>

#include "screens/picker/picker_show.h"

namespace marlet {

/// One source's tab of the match picker: a search and what it found. Lives as long as the picker;
/// start() is the beginning of another file.
class PickerPane : public marlet::PickerAsker {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("the picker has them")
    Q_PROPERTY(QString name READ name CONSTANT)
    Q_PROPERTY(bool database READ isDatabase CONSTANT)  ///< TMDB, and no shop
    Q_PROPERTY(QString prompt READ prompt CONSTANT)
    Q_PROPERTY(QString foot READ foot CONSTANT)  ///< whose details these are; empty for TMDB
    Q_PROPERTY(bool tv READ isTV NOTIFY changed)
    Q_PROPERTY(QString query READ query NOTIFY changed)
    Q_PROPERTY(QAbstractListModel* results READ results CONSTANT)
    Q_PROPERTY(int result READ result WRITE setResult NOTIFY changed)  ///< -1: none
    Q_PROPERTY(bool nothing READ isNothing NOTIFY changed)
    Q_PROPERTY(QString nothingTitle READ nothingTitle CONSTANT)
    Q_PROPERTY(QString nothingLine READ nothingLine CONSTANT)
    Q_PROPERTY(bool canUse READ canUse NOTIFY changed)
    Q_PROPERTY(marlet::PickerShow* show READ show CONSTANT)

public:
    PickerPane(SourceID id, AppModel& model, QObject* parent);
    ~PickerPane() override;

    SourceID id() const { return source_->id(); }
    QString name() const;
    bool isDatabase() const { return id() == SourceID::tmdb; }
    QString prompt() const;
    QString foot() const;
    bool isTV() const { return tv_; }
    const QString& query() const { return query_; }
    QAbstractListModel* results() { return &rows_; }
    int result() const { return result_; }
    void setResult(int row);
    bool isNothing() const;
    QString nothingTitle() const;
    QString nothingLine() const;
    bool canUse() const;
    PickerShow* show() { return &show_; }

    void start(const PickerFile& file, bool tv);
    /// Ends every request; what is shown stays until the next start().
    void stop();
    /// Searches for what the guess or, when they are given, the person says, unless it was searched
    /// for already.
    void enter(bool tv, const QString& typed);
    /// What a person typed; empty while the words are the guess's.
    QString typed() const { return wasTyped_ ? query_ : QString(); }
    Q_INVOKABLE void setTV(bool tv);
    /// What stands in the field. A service without a limit on requests is asked as soon as a
    /// person pauses.
    Q_INVOKABLE void type(const QString& words);
    Q_INVOKABLE void search();
    /// A row is on the screen: what only its full record tells is asked for.
    Q_INVOKABLE void seen(int row);
    /// Takes the film, or opens the show's page.
    Q_INVOKABLE void use();

private:
    Task<> find(QString words, bool tv, CancelToken cancel);
    void fillRow(const QString& key);
    Task<> fill(PickerTitle title, bool tv, CancelToken cancel);
    void take(PickerTitle film, CancelToken cancel);
    void takeOver(std::vector<PickerTitle> found);
    void showTitles();
    void preselect();
    bool fits(const PickerTitle& title) const;
    std::size_t mostFilled() const;

    std::unique_ptr<PickerSource> source_;
    PickerShow show_;
    PickerFile file_;
    bool tv_ = false;
    QString query_;
    bool wasTyped_ = false;  ///< the words are a person's and no guess
    bool isSearched_ = false;
    bool isFound_ = false;             ///< the answer to the last search is there
    std::vector<PickerTitle> titles_;  ///< as rows_ has them
    RowList<PickerTitleRow> rows_;
    int result_ = -1;
    std::set<std::string> filling_;
    QTimer pause_;
    CancelToken searching_;
    CancelToken taking_;
};

}  // namespace marlet
