// The page of the template editor. It talks to the application through one QWebChannel object, "editor",
// whose only method is post(message). Fields are shown as locked chips but travel as {{nome}}.
(function () {
    'use strict';

    var SEGNAPOSTO = /\{\{\s*([^{}]+?)\s*\}\}/g;
    var INTERVALLO_CHANGE = 200; // ms: a burst of typing posts at most this often, the last state always
    var COLORE_PULSANTE = '#1A57DB';

    var radice = null;
    var ponte = null;
    var contenutiRicevuti = 0; // setContent calls so far: each "change" says which content it belongs to
    var ultimoInviato = null;
    var ultimoInvio = 0;
    var timerChange = null;
    var intervallo = null;
    var campi = [];

    // --- Text helpers -----------------------------------------------------------------------------

    function escapeHTML(testo) {
        return String(testo).replace(/&/g, '&amp;').replace(/</g, '&lt;').replace(/>/g, '&gt;')
            .replace(/"/g, '&quot;').replace(/'/g, '&#39;');
    }

    function coloreValido(colore) {
        return /^#[0-9a-fA-F]{6}$/.test(String(colore)) ? String(colore) : null;
    }

    // Addresses a message may carry: the web, mail, phone, a field, or a fragment. Anything else
    // (javascript:, data:, file:) is dropped.
    function indirizzoSicuro(url) {
        var u = String(url || '').trim();
        if (/^(https?:|mailto:|tel:)/i.test(u) || /^\{\{[^{}]+\}\}/.test(u) || /^#/.test(u))
            return u;
        if (/^[a-z][a-z0-9+.-]*:/i.test(u))
            return null;
        return u ? 'https://' + u : null;
    }

    // --- Chips ------------------------------------------------------------------------------------

    function creaChip(nome) {
        var chip = document.createElement('span');
        chip.className = 'tok';
        chip.setAttribute('contenteditable', 'false');
        chip.setAttribute('data-f', nome);
        chip.textContent = nome;
        return chip;
    }

    // Inserted without its lock: the browser's insert command mangles locked elements (it splits the line
    // and copies their text). The lock is put on right after. A zero-width space after the chip gives the
    // caret a place to land; it never reaches the template.
    function chipHTML(nome) {
        var chip = creaChip(nome);
        chip.removeAttribute('contenteditable');
        return chip.outerHTML + '\u200B';
    }

    // Markup about to go through the insert command: no locks yet.
    function sblocca(contenitore) {
        contenitore.querySelectorAll('[contenteditable]').forEach(function (nodo) {
            nodo.removeAttribute('contenteditable');
        });
    }

    function bloccaChip(contenitore) {
        contenitore.querySelectorAll('span.tok[data-f]').forEach(function (chip) {
            chip.setAttribute('contenteditable', 'false');
        });
    }

    // Every {{nome}} in the text of the tree becomes a chip; attributes (a link's address) keep the
    // placeholder as text, since that is where the renderer will replace it.
    function inChip(contenitore) {
        var percorso = document.createTreeWalker(contenitore, NodeFilter.SHOW_TEXT, null);
        var testi = [];
        while (percorso.nextNode())
            testi.push(percorso.currentNode);
        testi.forEach(function (nodo) {
            var testo = nodo.nodeValue;
            SEGNAPOSTO.lastIndex = 0;
            if (!SEGNAPOSTO.test(testo))
                return;
            var pezzi = document.createDocumentFragment();
            var cursore = 0;
            testo.replace(SEGNAPOSTO, function (intero, nome, posizione) {
                if (posizione > cursore)
                    pezzi.appendChild(document.createTextNode(testo.slice(cursore, posizione)));
                pezzi.appendChild(creaChip(nome));
                cursore = posizione + intero.length;
                return intero;
            });
            if (cursore < testo.length)
                pezzi.appendChild(document.createTextNode(testo.slice(cursore)));
            nodo.parentNode.replaceChild(pezzi, nodo);
        });
    }

    function bloccaPulsanti(contenitore) {
        contenitore.querySelectorAll('table[role="presentation"]').forEach(function (tabella) {
            if (tabella.querySelector('a'))
                tabella.setAttribute('contenteditable', 'false');
        });
    }

    // The content as it is stored: chips back to {{nome}}, and none of the editing attributes.
    function serializza() {
        var copia = radice.cloneNode(true);
        copia.querySelectorAll('span.tok[data-f]').forEach(function (chip) {
            chip.parentNode.replaceChild(document.createTextNode('{{' + chip.getAttribute('data-f') + '}}'), chip);
        });
        copia.querySelectorAll('[contenteditable]').forEach(function (nodo) {
            nodo.removeAttribute('contenteditable');
        });
        return copia.innerHTML.replace(/\u200B/g, '');
    }

    // --- Messages ---------------------------------------------------------------------------------

    function posta(messaggio) {
        if (ponte)
            ponte.post(messaggio);
    }

    function inviaChange() {
        if (timerChange !== null) {
            clearTimeout(timerChange);
            timerChange = null;
        }
        var html = serializza();
        if (html === ultimoInviato)
            return;
        ultimoInviato = html;
        ultimoInvio = Date.now();
        posta({type: 'change', html: html, gen: contenutiRicevuti});
    }

    // The first change of a quiet spell goes at once; while typing goes on, one per interval.
    function notaChange() {
        if (timerChange !== null)
            return;
        var attesa = INTERVALLO_CHANGE - (Date.now() - ultimoInvio);
        if (attesa <= 0)
            inviaChange();
        else
            timerChange = setTimeout(inviaChange, attesa);
    }

    // --- Selection --------------------------------------------------------------------------------

    function dentro(nodo) {
        return nodo && (nodo === radice || radice.contains(nodo));
    }

    function ricordaSelezione() {
        var selezione = window.getSelection();
        if (selezione.rangeCount > 0 && dentro(selezione.getRangeAt(0).commonAncestorContainer))
            intervallo = selezione.getRangeAt(0).cloneRange();
    }

    // Toolbar commands arrive while the application's widgets hold the focus: put the caret back where
    // the user left it, or at the end.
    function ripristinaSelezione() {
        var selezione = window.getSelection();
        var aveva = selezione.rangeCount > 0 && dentro(selezione.getRangeAt(0).commonAncestorContainer);
        radice.focus();
        if (intervallo && dentro(intervallo.commonAncestorContainer)) {
            selezione.removeAllRanges();
            selezione.addRange(intervallo);
        } else if (!aveva) {
            var fine = document.createRange();
            fine.selectNodeContents(radice);
            fine.collapse(false);
            selezione.removeAllRanges();
            selezione.addRange(fine);
        }
    }

    function comando(nome, valore) {
        ripristinaSelezione();
        document.execCommand(nome, false, valore === undefined ? null : valore);
        ricordaSelezione();
        notaChange();
    }

    // The browser rewrites inline styles as it inserts (a "border-top:1px solid" loses its width): the
    // styles are marked before and put back as written after.
    function inserisci(html) {
        var modello = document.createElement('div');
        modello.innerHTML = html;
        var stili = [];
        modello.querySelectorAll('[style]').forEach(function (nodo) {
            nodo.setAttribute('data-brz-stile', String(stili.length));
            stili.push(nodo.getAttribute('style'));
        });
        comando('insertHTML', modello.innerHTML);
        bloccaChip(radice);
        radice.querySelectorAll('[data-brz-stile]').forEach(function (nodo) {
            var stile = stili[Number(nodo.getAttribute('data-brz-stile'))];
            nodo.removeAttribute('data-brz-stile');
            if (stile !== undefined)
                nodo.setAttribute('style', stile);
        });
    }

    // --- Pasting ----------------------------------------------------------------------------------

    var DA_TOGLIERE = ['script', 'style', 'meta', 'link', 'title', 'head', 'xml', 'iframe', 'frame', 'frameset',
        'object', 'embed', 'applet', 'form', 'input', 'button', 'select', 'textarea', 'option', 'svg', 'math',
        'noscript', 'template', 'canvas', 'audio', 'video', 'source', 'track', 'base', 'portal', 'dialog'];
    var AMMESSI = ['p', 'div', 'br', 'span', 'b', 'strong', 'i', 'em', 'u', 's', 'strike', 'del', 'ins', 'sub',
        'sup', 'small', 'big', 'mark', 'a', 'ul', 'ol', 'li', 'dl', 'dt', 'dd', 'table', 'thead', 'tbody', 'tfoot',
        'tr', 'td', 'th', 'caption', 'colgroup', 'col', 'h1', 'h2', 'h3', 'h4', 'h5', 'h6', 'blockquote', 'pre',
        'code', 'img', 'hr', 'font', 'center'];
    var ATTRIBUTI = {
        '*': ['style', 'align', 'dir', 'title'],
        a: ['href', 'title'],
        img: ['src', 'alt', 'width', 'height'],
        table: ['border', 'cellpadding', 'cellspacing', 'width', 'role', 'bgcolor'],
        td: ['colspan', 'rowspan', 'valign', 'bgcolor', 'width', 'height'],
        th: ['colspan', 'rowspan', 'valign', 'bgcolor', 'width', 'height'],
        tr: ['valign', 'bgcolor'],
        col: ['span', 'width'],
        colgroup: ['span', 'width'],
        font: ['color', 'face', 'size'],
        ol: ['start', 'type'],
        span: ['data-f', 'class']
    };
    var PROPRIETA = ['color', 'background-color', 'background', 'font-weight', 'font-style', 'font-size',
        'font-family', 'text-decoration', 'text-align', 'vertical-align', 'line-height', 'width', 'height',
        'max-width', 'padding', 'padding-top', 'padding-right', 'padding-bottom', 'padding-left', 'margin',
        'margin-top', 'margin-right', 'margin-bottom', 'margin-left', 'border', 'border-top', 'border-right',
        'border-bottom', 'border-left', 'border-color', 'border-style', 'border-width', 'border-radius',
        'border-collapse', 'display', 'list-style-type', 'white-space'];

    function stilePulito(stile) {
        var tenuti = [];
        String(stile).split(';').forEach(function (dichiarazione) {
            var due = dichiarazione.indexOf(':');
            if (due < 0)
                return;
            var nome = dichiarazione.slice(0, due).trim().toLowerCase();
            var valore = dichiarazione.slice(due + 1).trim();
            if (PROPRIETA.indexOf(nome) < 0 || !valore || /url\s*\(|expression|javascript:|behavior|@import/i.test(valore))
                return;
            tenuti.push(nome + ':' + valore);
        });
        return tenuti.join(';');
    }

    function attributoAmmesso(tag, nome) {
        return ATTRIBUTI['*'].indexOf(nome) >= 0 || (ATTRIBUTI[tag] || []).indexOf(nome) >= 0;
    }

    function pulisciNodo(nodo, destinazione) {
        nodo.childNodes.forEach(function (figlio) {
            if (figlio.nodeType === Node.TEXT_NODE) {
                destinazione.appendChild(document.createTextNode(figlio.nodeValue));
                return;
            }
            if (figlio.nodeType !== Node.ELEMENT_NODE)
                return; // comments, conditional comments, processing instructions
            var tag = figlio.localName.toLowerCase();
            if (DA_TOGLIERE.indexOf(tag) >= 0)
                return;
            // Office namespaces (o:p, w:sdt, v:shape): their words stay, the element goes.
            if (tag.indexOf(':') >= 0 || AMMESSI.indexOf(tag) < 0) {
                pulisciNodo(figlio, destinazione);
                return;
            }
            if (tag === 'span' && figlio.classList.contains('tok') && figlio.getAttribute('data-f')) {
                var chip = creaChip(figlio.getAttribute('data-f'));
                chip.removeAttribute('contenteditable');
                destinazione.appendChild(chip);
                return;
            }
            var copia = document.createElement(tag);
            Array.prototype.forEach.call(figlio.attributes, function (attributo) {
                var nome = attributo.name.toLowerCase();
                if (!attributoAmmesso(tag, nome) || nome === 'class')
                    return;
                var valore = attributo.value;
                if (nome === 'style') {
                    valore = stilePulito(valore);
                    if (!valore)
                        return;
                } else if (nome === 'href') {
                    valore = indirizzoSicuro(valore);
                    if (valore === null)
                        return;
                } else if (nome === 'src') {
                    if (!/^(https?:\/\/|data:image\/(png|jpe?g|gif|webp);)/i.test(valore.trim()))
                        return;
                }
                copia.setAttribute(nome, valore);
            });
            if (tag === 'img' && !copia.getAttribute('src'))
                return; // a local or unknown picture would only show as a broken frame
            pulisciNodo(figlio, copia);
            destinazione.appendChild(copia);
        });
    }

    // What the user pastes or drops is rebuilt from an allow-list: no script, no event attribute, no
    // style sheet, no office markup; text, basic formatting, lists, links, tables and pictures stay.
    function htmlPulito(html) {
        var documento = new DOMParser().parseFromString(String(html), 'text/html');
        var frammento = document.createElement('div');
        pulisciNodo(documento.body, frammento);
        inChip(frammento);
        sblocca(frammento);
        return frammento.innerHTML;
    }

    function testoInHTML(testo) {
        var contenitore = document.createElement('div');
        String(testo).replace(/\r\n?/g, '\n').split('\n').forEach(function (riga, indice) {
            if (indice > 0)
                contenitore.appendChild(document.createElement('br'));
            contenitore.appendChild(document.createTextNode(riga));
        });
        inChip(contenitore);
        sblocca(contenitore);
        return contenitore.innerHTML;
    }

    function daAppunti(dati) {
        var html = dati.getData('text/html');
        if (html)
            return htmlPulito(html);
        var testo = dati.getData('text/plain');
        return testo ? testoInHTML(testo) : '';
    }

    // --- Commands of the application ------------------------------------------------------------------

    function setContent(html) {
        // An edit still waiting belongs to the content being replaced: it goes out first, marked as such.
        inviaChange();
        contenutiRicevuti += 1;
        var nuova = radice.cloneNode(false);
        nuova.innerHTML = String(html === undefined || html === null ? '' : html);
        inChip(nuova);
        bloccaPulsanti(nuova);
        // A fresh element: the undo history of the previous template must not reach into this one.
        radice.parentNode.replaceChild(nuova, radice);
        radice = nuova;
        collega(radice);
        intervallo = null;
        ultimoInviato = serializza();
    }

    function setFields(nomi) {
        campi = Array.isArray(nomi) ? nomi.map(String) : [];
    }

    function insertField(nome) {
        nome = String(nome || '').trim();
        if (nome)
            inserisci(chipHTML(nome));
    }

    function insertHTML(html) {
        inserisci(htmlPulito(html));
    }

    function insertImage(uri) {
        if (!/^data:image\/(png|jpe?g|gif|webp);base64,/i.test(String(uri)))
            return;
        inserisci('<img src="' + escapeHTML(uri) + '" alt="" style="max-width:100%;height:auto;">');
    }

    function insertLink(url, testo) {
        var indirizzo = indirizzoSicuro(url);
        if (indirizzo === null)
            return;
        ripristinaSelezione();
        var selezione = window.getSelection();
        var vuota = selezione.rangeCount === 0 || selezione.getRangeAt(0).collapsed;
        testo = String(testo || '');
        if (!testo && !vuota) {
            comando('createLink', indirizzo);
            return;
        }
        inserisci('<a href="' + escapeHTML(indirizzo) + '">' + escapeHTML(testo || String(url).trim()) + '</a>');
    }

    function insertButton(url, etichetta, colore) {
        var indirizzo = indirizzoSicuro(url);
        if (indirizzo === null)
            return;
        var tinta = coloreValido(colore) || COLORE_PULSANTE;
        // A table cell carries the colour: mail clients that drop padding on anchors still show a button.
        var html = '<table role="presentation" cellpadding="0" cellspacing="0" border="0" ' +
            'style="margin:16px 0;border-collapse:separate;"><tr>' +
            '<td align="center" bgcolor="' + tinta + '" style="background-color:' + tinta + ';border-radius:6px;">' +
            '<a href="' + escapeHTML(indirizzo) + '" style="display:inline-block;padding:12px 26px;' +
            'font-family:Arial,Helvetica,sans-serif;font-size:15px;font-weight:bold;line-height:1.2;' +
            'color:#ffffff;text-decoration:none;border-radius:6px;">' + escapeHTML(etichetta) + '</a>' +
            '</td></tr></table><div><br></div>';
        inserisci(html);
        bloccaPulsanti(radice);
    }

    var COMANDI = ['bold', 'italic', 'underline', 'strikeThrough', 'foreColor', 'hiliteColor',
        'insertUnorderedList', 'insertOrderedList', 'justifyLeft', 'justifyCenter', 'justifyRight',
        'removeFormat', 'undo', 'redo', 'insertHorizontalRule', 'outdent', 'indent', 'unlink'];

    function exec(nome, valore) {
        if (COMANDI.indexOf(nome) < 0)
            return;
        if (nome === 'foreColor' || nome === 'hiliteColor') {
            valore = coloreValido(valore);
            if (!valore)
                return;
        }
        // Colours as inline styles rather than <font>, which some mail clients drop; the rest as plain tags.
        document.execCommand('styleWithCSS', false, nome === 'foreColor' || nome === 'hiliteColor');
        comando(nome, valore);
    }

    function setFontFamily(pila) {
        if (!/^[A-Za-z0-9 ,'"-]+$/.test(String(pila)))
            return;
        document.execCommand('styleWithCSS', false, true);
        comando('fontName', String(pila));
    }

    // The browser knows only the seven old sizes: mark with the largest, then turn the marks into pixels.
    function setFontSize(px) {
        px = Math.round(Number(px));
        if (!(px >= 6 && px <= 96))
            return;
        document.execCommand('styleWithCSS', false, false);
        comando('fontSize', '7');
        radice.querySelectorAll('font[size="7"]').forEach(function (vecchio) {
            var span = document.createElement('span');
            span.style.fontSize = px + 'px';
            while (vecchio.firstChild)
                span.appendChild(vecchio.firstChild);
            vecchio.parentNode.replaceChild(span, vecchio);
        });
        notaChange();
    }

    function clearFormatting() {
        comando('removeFormat');
    }

    // --- Events -----------------------------------------------------------------------------------------

    function collega(elemento) {
        elemento.addEventListener('input', notaChange);
        elemento.addEventListener('blur', function () {
            ricordaSelezione();
            inviaChange();
        });
        elemento.addEventListener('paste', function (evento) {
            evento.preventDefault();
            var html = daAppunti(evento.clipboardData);
            if (html)
                inserisci(html);
        });
        elemento.addEventListener('drop', function (evento) {
            evento.preventDefault();
            var html = daAppunti(evento.dataTransfer);
            if (!html)
                return;
            var punto = document.caretRangeFromPoint(evento.clientX, evento.clientY);
            if (punto && dentro(punto.commonAncestorContainer))
                intervallo = punto;
            inserisci(html);
        });
        elemento.addEventListener('keydown', function (evento) {
            var tasto = evento.key.toLowerCase();
            if ((evento.ctrlKey || evento.metaKey) && tasto === 'z' && evento.shiftKey) {
                evento.preventDefault();
                comando('redo');
            }
        });
    }

    document.addEventListener('selectionchange', ricordaSelezione);
    // Nothing dropped outside the text may replace the page.
    document.addEventListener('dragover', function (evento) { evento.preventDefault(); });
    document.addEventListener('drop', function (evento) { evento.preventDefault(); });

    window.BrezzarioEditor = {
        setContent: setContent,
        setFields: setFields,
        insertField: insertField,
        insertHTML: insertHTML,
        insertImage: insertImage,
        insertLink: insertLink,
        insertButton: insertButton,
        exec: exec,
        setFontFamily: setFontFamily,
        setFontSize: setFontSize,
        clearFormatting: clearFormatting,
        // For the application's tests: what would be stored now, and the field names it was given.
        html: serializza,
        fields: function () { return campi.slice(); },
        cleanPaste: htmlPulito
    };

    document.addEventListener('DOMContentLoaded', function () {
        radice = document.getElementById('contenuto');
        collega(radice);
        document.execCommand('defaultParagraphSeparator', false, 'div');
        ultimoInviato = serializza();
        if (typeof QWebChannel === 'undefined' || typeof qt === 'undefined')
            return;
        new QWebChannel(qt.webChannelTransport, function (canale) {
            ponte = canale.objects.editor;
            posta({type: 'ready'});
        });
    });
}());
