#ifndef LIBNOTE_OKULAR_GENERATOR_NOTE_H
#define LIBNOTE_OKULAR_GENERATOR_NOTE_H

// Okular's generator of handwritten notes: each page of the note at its size on paper,
// drawn by the page library as notetool draws it, in Okular's worker thread.

#include <okular/core/document.h>
#include <okular/core/generator.h>

#include <string>
#include <vector>

#include "document_info.h"

class NoteGenerator : public Okular::Generator {
    Q_OBJECT
    Q_INTERFACES(Okular::Generator)

public:
    NoteGenerator(QObject* parent, const QVariantList& args);

    bool loadDocument(const QString& fileName, QVector<Okular::Page*>& pages) override;
    Okular::DocumentInfo generateDocumentInfo(const QSet<Okular::DocumentInfo::Key>& keys) const override;
    PageSizeMetric pagesSizeMetric() const override { return Points; }
    Okular::Document::PrintError print(QPrinter& printer) override;

protected:
    bool doCloseDocument() override;
    QImage image(Okular::PixmapRequest* request) override;

private:
    // Page `index` of the document (from 0) drawn width x height pixels large; a page that
    // cannot be read is blank paper, as in notetool's documents.
    QImage pagePicture(int index, int width, int height) const;

    // Set by loadDocument() before Okular starts any worker, read-only afterwards.
    std::string path_;
    std::vector<int> pageNumbers_;  // the index's page numbers, by the document's page
    notetool::DocumentInfo info_;
};

#endif
