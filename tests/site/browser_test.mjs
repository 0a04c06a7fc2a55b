// How a browser shows the site: node browser_test.mjs NODE_MODULES SITE. Prints what is wrong, one
// fault a line, and ends with 1 when something is.
import { readFileSync, readdirSync } from "node:fs";
import { createRequire } from "node:module";
import { join, resolve } from "node:path";
import { pathToFileURL } from "node:url";

const [modules, site] = process.argv.slice(2).map((folder) => resolve(folder));
const packages = createRequire(join(modules, "here.js"));
const puppeteer = packages("puppeteer-core");
const axeSource = readFileSync(packages.resolve("axe-core/axe.min.js"), "utf8");

const desktop = { width: 1400, height: 900 };
const telephone = { width: 390, height: 844, isMobile: true, hasTouch: true };
const faults = [];
const address = (name) => `${pathToFileURL(site)}/${name}`;
const names = readdirSync(site).filter((name) => name.endsWith(".html")).sort();

function expect(holds, fault) {
    if (!holds) faults.push(fault);
}
function expectEqual(actual, expected, what) {
    expect(JSON.stringify(actual) === JSON.stringify(expected),
        `${what}: ${JSON.stringify(actual)}, expected ${JSON.stringify(expected)}`);
}

async function newPage(browser, viewport, colours = "light") {
    const page = await browser.newPage();
    await page.setViewport(viewport);
    await page.emulateMediaFeatures([{ name: "prefers-color-scheme", value: colours }]);
    const told = (text) => faults.push(`${page.url().split("/").pop()}: ${text}`);
    page.on("console", (message) => {
        if (["error", "warn"].includes(message.type())) told(`console: ${message.text()}`);
    });
    page.on("pageerror", (error) => told(`script: ${error.message}`));
    page.on("requestfailed", (request) => {
        if (request.failure().errorText !== "net::ERR_ABORTED") // the page was left meanwhile
            told(`not loaded: ${request.url()}`);
    });
    page.on("request", (request) => {
        if (!request.url().startsWith("file:")) told(`from elsewhere: ${request.url()}`);
    });
    return page;
}

// Elements that reach beyond the window, or can be scrolled sideways.
function sideways() {
    const width = document.documentElement.clientWidth;
    const whole = document.documentElement.scrollWidth;
    const wide = whole > width ? [`page of ${whole}`] : [];
    for (const element of document.querySelectorAll("main, main *, header, header *")) {
        const { overflowX } = getComputedStyle(element);
        if (element.scrollWidth > element.clientWidth + 1 && ["auto", "scroll"].includes(overflowX))
            wide.push(`${element.tagName} scrolls`);
        if (element.getBoundingClientRect().right > width + 1)
            wide.push(`${element.tagName}: ${element.textContent.trim().slice(0, 40)}`);
    }
    return wide.slice(0, 3);
}

async function everyPageFitsATelephone(browser) {
    const rest = [...names];
    const worker = async () => {
        const page = await newPage(browser, telephone);
        for (let name = rest.shift(); name; name = rest.shift()) {
            await page.goto(address(name));
            for (const wide of await page.evaluate(sideways)) faults.push(`${name}: too wide: ${wide}`);
        }
        await page.close();
    };
    await Promise.all([worker(), worker()]);
}

// What the search page shows for each of the queries.
function ask(page, ...queries) {
    return page.evaluate((all) => all.map((query) => {
        const field = document.getElementById("search");
        field.value = query;
        field.dispatchEvent(new Event("input"));
        return [...document.querySelectorAll("#results a")].map((link) => link.getAttribute("href"));
    }), queries);
}

async function theSearchFinds(browser) {
    const page = await newPage(browser, desktop);
    await page.goto(address("index.html"));
    await page.keyboard.press("/");
    await page.keyboard.type("checksum");
    await Promise.all([page.waitForNavigation(), page.keyboard.press("Enter")]);
    expectEqual(await page.$eval("#results a", (link) => link.getAttribute("href")),
        "VlFile_GetFileHash.html", "checksum, from the start page");
    await page.keyboard.press("Enter"); // goes to the first result
    await Promise.all([page.waitForNavigation(), page.keyboard.press("Enter")]);
    expectEqual(page.url().split("/").pop(), "VlFile_GetFileHash.html", "the first result");
    await page.goto(address("search.html"));
    await page.keyboard.type("-43");
    expectEqual(await page.$eval("#results a", (link) => link.getAttribute("href")),
        "result-codes.html#code-43", "typed on the search page");
    for (const [query, first] of [
        ["fingerprints", "VlFile_GetFileHash.html"], // a keyword, in the plural
        ["-SHA1", "VlFile_GetFileHash.html"], // a switch
        ["getfilehash", "VlFile_GetFileHash.html"],
        ["get file hash", "VlFile_GetFileHash.html"],
        ["$$-43", "result-codes.html#code-43"],
        ["copy file", "VlFile_CopyFile.html#script-step-copy-file"],
        ["Stop DragAndDrop Handlers", "VlFile_DragAndDrop.html#script-step-stop-draganddrop-handlers"],
        ["ubersicht", "examples.html"], // in a text only, with an umlaut
    ]) expectEqual((await ask(page, query))[0][0], first, query);
    expectEqual(await ask(page, "qqqq"), [[]], "qqqq");
    expect((await page.$eval("#status", (line) => line.textContent)).includes("Nothing is found"),
        "nothing is said when nothing is found");
    await ask(page, "<img src=x>"); // stays a text
    expectEqual(await page.$$eval("#status img, #results img", (images) => images.length), 0, "<img");

    // Each name finds its page first, each keyword without much scrolling.
    const entries = (await page.evaluate(() => window.searchIndex))
        .filter((entry) => entry.kind === "function");
    const wrong = [];
    for (const entry of entries) {
        const words = entry.keywords.split(", ");
        const [byName, ...byWords] = await ask(page, entry.title, ...words);
        if (byName[0] !== entry.address) wrong.push(`${entry.title}: ${byName[0]}`);
        wrong.push(...words.filter((word, index) => !byWords[index].slice(0, 20).includes(entry.address))
            .map((word) => `${word}: ${entry.title}`));
    }
    expectEqual(wrong, [], "names and keywords that do not find their pages");
    await page.close();
}

async function nothingKeepsReadersOut(browser) {
    const worker = async (colours) => {
        const options = { resultTypes: ["violations"], preload: false };
        if (colours === "dark") options.runOnly = ["color-contrast", "link-in-text-block"];
        for (const [viewport, ...addresses] of [
            [desktop, "index.html", "VlFile_CopyFile.html", "VlFile_GetFileHash.html",
                "VlFile_ExecuteShell.html", "switches.html", "search.html?q=checksum"],
            [telephone, ...(colours === "light" ? ["VlFile_CopyFile.html", "subjects.html"] : [])],
        ]) {
            const page = await newPage(browser, viewport, colours);
            for (const name of addresses) {
                await page.goto(address(name));
                await page.evaluate(axeSource);
                // The list of pages is the same everywhere, and long.
                const part = name === "index.html" ? { include: "html" } : { exclude: ".pages" };
                const { violations, passes } = await page.evaluate((part, choice) =>
                    window.axe.run(part, choice), part, options);
                expect(passes.some(({ id }) => id === "color-contrast"), `${name}: no contrast was measured`);
                for (const { id, impact, nodes } of violations)
                    if (["serious", "critical"].includes(impact))
                        faults.push(`${name} (${colours}, ${viewport.width}): ${id}: ${nodes[0].html}`);
            }
            await page.close();
        }
    };
    await Promise.all([worker("light"), worker("dark")]);
}

const background = (page) => page.$eval("body", (body) =>
    Math.max(...getComputedStyle(body).backgroundColor.match(/\d+/g).map(Number)) > 200 ? "light" : "dark");

async function coloursAreTheReadersChoice(browser) {
    for (const colours of ["light", "dark"]) {
        const other = colours === "light" ? "dark" : "light";
        const page = await newPage(browser, desktop, colours);
        await page.goto(address("VlFile_CopyFile.html"));
        expectEqual(await background(page), colours, `the system's colours are ${colours}`);
        await page.click(".theme");
        expectEqual(await background(page), other, `${other} was chosen`);
        await page.goto(address("index.html"));
        expectEqual(await background(page), other, `${other} was chosen on another page`);
        await page.emulateMediaType("print");
        expectEqual(await background(page), "light", "on paper");
        expectEqual(await page.$$eval(".bar, .pages, .beside, .copy, .skip", (parts) =>
            parts.filter((part) => part.offsetParent).length), 0, "what no paper needs");
        await page.emulateMediaType(null);
        await page.evaluate(() => localStorage.clear());
        await page.close();
    }
}

const focused = (page) => page.evaluate(() => document.activeElement.textContent.trim()
    || document.activeElement.id);

async function theKeyboardIsEnough(browser) {
    const page = await newPage(browser, desktop);
    await page.goto(address("VlFile_CopyFile.html"));
    await page.keyboard.press("Tab");
    expectEqual(await focused(page), "Skip to the text", "the first stop");
    await page.keyboard.press("Enter");
    await page.keyboard.press("Tab");
    expect(await page.evaluate(() => document.activeElement.closest("main") !== null),
        "behind the skipped part the focus is in the text");
    await page.setViewport({ ...telephone, isMobile: false, hasTouch: false });
    await page.goto(address("VlFile_CopyFile.html"));
    const isOpen = () => page.$eval(".pages", (list) => list.offsetParent !== null);
    expectEqual(await isOpen(), false, "the menu before it is asked for");
    await page.focus(".menu");
    await page.keyboard.press("Enter");
    expectEqual(await isOpen(), true, "the menu");
    await page.keyboard.press("Escape");
    expectEqual(await isOpen(), false, "the menu behind Escape");
    expectEqual(await focused(page), "Menu", "the focus behind Escape");
    await page.close();
}

async function examplesCanBeCopied(browser) {
    const page = await newPage(browser, desktop);
    await page.goto(address("VlFile_CopyFile.html"));
    await page.evaluate(() => {
        Object.defineProperty(navigator, "clipboard",
            { value: { writeText: async (text) => { window.copied = text; } } });
    });
    await page.hover(".block.vell");
    await page.click(".block.vell .copy");
    const [copied, shown] = await page.evaluate(() =>
        [window.copied, document.querySelector(".block.vell code").textContent]);
    expect(copied === shown && shown.startsWith("VlFile_"), `copied: ${copied}`);
    await page.close();
}

async function helpAddressesLead(browser) {
    const page = await newPage(browser, desktop);
    for (const [id, name] of [["4210", "VlFile_CopyFile.html"],
        ["7210", "VlFile_CopyFile.html#script-step-copy-file"],
        ["index", "index.html"], ["index.html?4210", "VlFile_CopyFile.html"],
        ["index.html?id=1&version=14.0.508", "VlFile_Version.html"]]) {
        await page.goto(address(`id/${id}${id.includes("?") ? "" : ".html"}`));
        await page.waitForSelector(".bar", { timeout: 5000 });
        expectEqual(page.url().split("/").pop(), name, id);
    }
    await page.close();
}

async function pagesAreCompleteWithoutScripts(browser) {
    const page = await newPage(browser, telephone);
    await page.setJavaScriptEnabled(false);
    await page.goto(address("VlFile_CopyFile.html"));
    const seen = async (selector) => (await (await page.$(selector)).boundingBox()) !== null;
    expect(await seen(".pages a"), "without scripts the list of pages is hidden");
    expect(!await seen(".theme"), "without scripts there is a button that does nothing");
    await page.close();
}

const browser = await puppeteer.launch({
    executablePath: process.env.CHROMIUM || "/usr/bin/chromium",
    args: ["--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage"], // as in containers
});
try {
    for (const part of [everyPageFitsATelephone, theSearchFinds, nothingKeepsReadersOut,
        coloursAreTheReadersChoice, theKeyboardIsEnough, examplesCanBeCopied, helpAddressesLead,
        pagesAreCompleteWithoutScripts]) {
        const start = Date.now();
        await part(browser);
        if (process.env.TIMES) console.log(`${part.name}: ${Date.now() - start} ms`);
    }
} finally {
    await browser.close();
}
for (const fault of faults) console.log(fault);
process.exitCode = faults.length ? 1 : 0;
