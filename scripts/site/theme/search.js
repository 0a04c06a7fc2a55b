// The search page: looks through window.searchIndex while the reader types.
(function () {
    "use strict";
    const field = document.getElementById("search");
    const status = document.getElementById("status");
    const list = document.getElementById("results");

    const folded = (text) => text.normalize("NFKD").replace(/[\u0300-\u036f]/g, "").toLowerCase();
    const inWords = (text) => folded(text).split(/[^\p{L}\p{N}_]+/u).filter(Boolean);
    const inPhrases = (text) => folded(text).split(", ").filter(Boolean);

    // What is compared, once for each entry.
    const entries = window.searchIndex.map((entry) => ({
        ...entry,
        name: folded(entry.title),
        nameWords: inWords(`${entry.title} ${entry.words || ""}`),
        keywordPhrases: new Set(inPhrases(entry.keywords || "")),
        keywordWords: [...inWords(`${entry.keywords || ""} ${entry.subject || ""}`),
            ...folded(entry.keywords || "").split(/[\s,]+/)], // "UTF-8" as a whole, too
        switchNames: (entry.switches || []).map(folded),
        codes: new Map(Object.entries(entry.codes || {})),
        descriptionWords: inWords(`${entry.description} ${entry.registered || ""}`),
        sectionWords: inWords((entry.sections || []).map((section) => section[0]).join(" ")),
        allText: folded(entry.text || ""),
    }));

    // A word as it was typed, then without its ending: "checksums" finds "checksum".
    function forms(word) {
        const stems = [word];
        for (const ending of ["ing", "ies", "es", "ed", "s"])
            if (word.length >= ending.length + 3 && word.endsWith(ending))
                stems.push(word.slice(0, -ending.length));
        return stems;
    }

    const startsOne = (words, start) => words.some((word) => word.startsWith(start));

    function scoreOfForm(entry, word) {
        if (entry.name === word || entry.name === `vlfile_${word}`) return 200;
        if (entry.codes.has(word)) return 90;
        if (entry.nameWords.includes(word)) return 80;
        if (entry.keywordWords.includes(word)) return 70;
        if (word.length > 1 && entry.name.includes(word)) return 60;
        if (startsOne(entry.keywordWords, word)) return 50;
        if (word.length > 2 && entry.switchNames.some((name) => name.includes(word))) return 45;
        if (entry.descriptionWords.includes(word)) return 30;
        if (startsOne(entry.descriptionWords, word)) return 20;
        if (startsOne(entry.sectionWords, word)) return 12;
        const place = word.length > 1 ? entry.allText.indexOf(word) : -1;
        if (place < 0) return 0;
        return /[\p{L}\p{N}_]/u.test(entry.allText[place - 1] || " ") ? 2 : 5;
    }

    function scoreOfWord(entry, word) {
        if (/^-?\d+$/.test(word)) { // a result code, or a number that stands alone in the text
            if (entry.codes.has(word)) return entry.kind === "guide" ? 120 : 90;
            const alone = new RegExp(`(?<![\\p{N}-])${word}(?!\\p{N})`, "u");
            return alone.test(entry.allText) ? 3 : 0;
        }
        return Math.max(...forms(word).map((form, index) =>
            scoreOfForm(entry, form) * (index ? 0.8 : 1)));
    }

    function find(words) {
        const found = [];
        for (const entry of entries) {
            const scores = words.map((word) => scoreOfWord(entry, word));
            const matched = scores.filter((score) => score > 0).length;
            const whole = entry.name === words.join(" ") ? 500
                : entry.keywordPhrases.has(words.join(" ")) ? 60 : 0;
            const score = scores.reduce((sum, one) => sum + one, whole);
            if (matched) found.push({ entry, matched, score });
        }
        const best = Math.max(0, ...found.map((hit) => hit.matched));
        return {
            hits: found.filter((hit) => hit.matched === best).sort((a, b) => b.score - a.score
                || a.entry.title.localeCompare(b.entry.title, "en")),
            isWhole: best === words.length,
        };
    }

    // Where a code or a section that was asked for stands.
    function address(entry, words) {
        if (words.length === 1 && entry.codes.has(words[0]))
            return `${entry.address}#${entry.kind === "guide" ? `code${words[0]}` : "result-codes"}`;
        for (const [text, anchor] of entry.sections || [])
            if (folded(text) === words.join(" ")) return `${entry.address}#${anchor}`;
        return entry.address;
    }

    function marked(text, words) {
        const parts = document.createDocumentFragment();
        const patterns = words.flatMap(forms).filter((word) => word.length > 1)
            .map((word) => word.replace(/[.*+?^${}()|[\]\\]/g, "\\$&"));
        if (!patterns.length) {
            parts.append(text);
            return parts;
        }
        const pattern = new RegExp(`(${patterns.join("|")})`, "giu");
        text.split(pattern).forEach((piece, index) => {
            if (index % 2) {
                const mark = document.createElement("mark");
                mark.textContent = piece;
                parts.append(mark);
            } else {
                parts.append(piece);
            }
        });
        return parts;
    }

    // The cause of a code, or the words around the first one found when the description has none.
    function excerpt(entry, words) {
        const code = words.find((word) => entry.codes.has(word));
        if (code) return `${code}: ${entry.codes.get(code)}`;
        const description = folded(entry.description);
        const isShown = (word) => forms(word).some((form) => description.includes(form));
        if (!entry.text || words.some(isShown)) return "";
        const place = words.flatMap(forms).map((word) => entry.allText.indexOf(word))
            .find((index) => index >= 0);
        if (place === undefined || entry.allText.length !== entry.text.length) return "";
        const start = Math.max(0, entry.text.lastIndexOf(" ", Math.max(0, place - 50)));
        const end = entry.text.indexOf(" ", place + 90);
        return `… ${entry.text.slice(start, end < 0 ? undefined : end).trim()} …`;
    }

    function item(hit, words) {
        const { entry } = hit;
        const row = document.createElement("li");
        const link = document.createElement("a");
        link.href = address(entry, words);
        link.append(marked(entry.title, words));
        const kind = document.createElement("span");
        kind.className = "kind";
        kind.textContent = entry.kind;
        const about = document.createElement("p");
        about.append(marked(entry.description, words));
        row.append(link, " ", kind, about);
        const more = excerpt(entry, words);
        if (more) {
            const line = document.createElement("p");
            line.className = "excerpt";
            line.append(marked(more, words));
            row.append(line);
        }
        return row;
    }

    function show() {
        const asked = field.value.trim();
        // "$$-43" is the code -43; quotes and separators of switches do not matter.
        const words = folded(asked).replace(/\$\$/g, " ").split(/[\s",;()]+/).filter(Boolean);
        list.replaceChildren();
        document.title = `${asked ? `${asked} – ` : ""}Search – Vell File reference`;
        if (!words.length) {
            status.textContent = "Type a word into the field at the top.";
            return;
        }
        const { hits, isWhole } = find(words);
        if (!hits.length) {
            status.textContent = `Nothing is found for “${asked}”.`;
            return;
        }
        const number = hits.length === 1 ? "1 result" : `${hits.length} results`;
        status.textContent = isWhole ? `${number} for “${asked}”`
            : `No page has all of these words; ${number} for some of them`;
        list.append(...hits.map((hit) => item(hit, words)));
    }

    field.value = new URLSearchParams(location.search).get("q") || "";
    field.addEventListener("input", show);
    field.addEventListener("change", () => { // the address leads back to these results
        history.replaceState(null, "", `?q=${encodeURIComponent(field.value)}`);
    });
    field.form.addEventListener("submit", (event) => {
        event.preventDefault();
        const first = list.querySelector("a");
        if (first) first.focus();
    });
    show();
    field.focus(); // to change the words, or with Enter to go to the first result
})();
