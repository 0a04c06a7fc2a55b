// Colours, the menu of narrow screens, buttons that copy examples. Pages are complete without it.
(function () {
    "use strict";
    const page = document.documentElement;
    page.classList.add("scripted");

    function stored() {
        try { return localStorage.getItem("colours"); } catch (refused) { return null; }
    }
    function store(value) {
        try { localStorage.setItem("colours", value); } catch (refused) { /* for this page */ }
    }
    const system = matchMedia("(prefers-color-scheme: dark)");
    const isDark = () => (page.dataset.colours || (system.matches ? "dark" : "light")) === "dark";

    const chosen = stored(); // before anything is drawn
    if (chosen === "dark" || chosen === "light") page.dataset.colours = chosen;

    function prepareColours() {
        const button = document.querySelector(".theme");
        const show = () => {
            button.textContent = isDark() ? "Light" : "Dark";
            button.setAttribute("aria-label", isDark() ? "Light colours" : "Dark colours");
        };
        button.addEventListener("click", () => {
            page.dataset.colours = isDark() ? "light" : "dark";
            store(page.dataset.colours);
            show();
        });
        system.addEventListener("change", show);
        show();
    }

    function prepareMenu() {
        const button = document.querySelector(".menu");
        const show = (open) => {
            button.setAttribute("aria-expanded", String(open));
            page.classList.toggle("menu-open", open);
        };
        button.addEventListener("click", () => show(!page.classList.contains("menu-open")));
        document.addEventListener("keydown", (event) => {
            if (event.key === "Escape" && page.classList.contains("menu-open")) {
                show(false);
                button.focus();
            }
        });
        const list = document.querySelector(".pages"); // it scrolls, the page stays
        const current = list.querySelector("details[open] [aria-current]");
        const below = current && current.getBoundingClientRect().bottom
            - list.getBoundingClientRect().bottom;
        if (below > 0) list.scrollTop += below + list.clientHeight / 3;
    }

    function prepareSearchKey() {
        document.addEventListener("keydown", (event) => {
            const typing = /^(INPUT|TEXTAREA|SELECT)$/.test(event.target.tagName);
            if (event.key === "/" && !typing && !event.ctrlKey && !event.metaKey && !event.altKey) {
                event.preventDefault();
                document.getElementById("search").focus();
            }
        });
    }

    function copy(text) {
        if (navigator.clipboard) return navigator.clipboard.writeText(text);
        const field = document.createElement("textarea"); // without a secure origin
        field.value = text;
        document.body.append(field);
        field.select();
        const done = document.execCommand("copy");
        field.remove();
        return done ? Promise.resolve() : Promise.reject(new Error("refused"));
    }

    function prepareCopying() {
        for (const block of document.querySelectorAll(".block.vell")) {
            const button = document.createElement("button");
            button.type = "button";
            button.className = "copy";
            button.textContent = "Copy";
            button.addEventListener("click", () => {
                const answer = (word) => {
                    button.textContent = word;
                    setTimeout(() => { button.textContent = "Copy"; }, 1500);
                };
                copy(block.querySelector("code").textContent)
                    .then(() => answer("Copied"), () => answer("Not copied"));
            });
            block.append(button);
        }
    }

    document.addEventListener("DOMContentLoaded", () => {
        prepareColours();
        prepareMenu();
        prepareSearchKey();
        prepareCopying();
    });
})();
